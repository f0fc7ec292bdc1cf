#pragma once

#include <rapidjson/document.h>

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Text.h"

namespace Kiln {

/// One place of a JSON document that is being written.
///
/// A place that `member` or `element` gave is good until the next call of either on the same parent.
class JsonOut {
 public:
  using Allocator = rapidjson::Document::AllocatorType;

  /// REQUIRES: both outlive this object; `allocator` is the one of the document.
  JsonOut(rapidjson::Value& value, Allocator& allocator) : value_(&value), allocator_(&allocator) {}

  void null() { value_->SetNull(); }
  void boolean(bool value) { value_->SetBool(value); }
  void number(std::uint64_t value) { value_->SetUint64(value); }
  void number(std::int64_t value) { value_->SetInt64(value); }
  void number(double value) { value_->SetDouble(value); }
  void text(std::string_view value);
  void object() { value_->SetObject(); }
  void array() { value_->SetArray(); }

  /// The place of a new member. REQUIRES: `object()` was called.
  JsonOut member(std::string_view name);
  /// The place of a new last element. REQUIRES: `array()` was called.
  JsonOut element();

  rapidjson::Value& value() { return *value_; }
  Allocator& allocator() { return *allocator_; }

 private:
  rapidjson::Value* value_;
  Allocator* allocator_;
};

/// One place of a JSON document that is being read.
///
/// Knows the place that it was reached from, so that the path is put together only when something is wrong. Every
/// reader throws `ValueError` with path and value when the document holds something else. A `JsonIn` lives on the
/// stack, inside the life of its document, its parent and its key.
class JsonIn {
 public:
  explicit JsonIn(rapidjson::Value const& value, JsonIn const* parent = nullptr, std::string_view key = {})
      : value_(&value), parent_(parent), key_(key) {}

  /// Throws `ValueError` for this place; `expected` is its `what()`.
  [[noreturn]] void fail(std::string const& expected) const;
  /// As a JSON pointer: "" for the document, "/stateway/vxlan~1config/x" for a member further down.
  std::string path() const;
  rapidjson::Value const& value() const { return *value_; }

  bool isObject() const { return value_->IsObject(); }
  bool isArray() const { return value_->IsArray(); }
  bool isText() const { return value_->IsString(); }
  bool isNumber() const { return value_->IsNumber(); }
  bool isNull() const { return value_->IsNull(); }

  bool boolean() const;
  std::string_view text() const;
  /// A whole number from `min` to `max`.
  std::uint64_t unsignedNumber(std::uint64_t min, std::uint64_t max) const;
  std::int64_t signedNumber(std::int64_t min, std::int64_t max) const;
  double number() const;

  /// The member of that name; `find` answers nothing when there is none, `member` throws.
  std::optional<JsonIn> find(std::string_view name) const&;
  JsonIn member(std::string_view name) const&;
  /// Members or elements. 0 for anything else.
  std::size_t size() const;
  /// REQUIRES: an array with more than `index` elements.
  JsonIn element(std::size_t index) const&;
  // A place must not outlive its parent.
  std::optional<JsonIn> find(std::string_view name) const&& = delete;
  JsonIn member(std::string_view name) const&& = delete;
  JsonIn element(std::size_t index) const&& = delete;

  /// Calls `visit(name, JsonIn const&)` for each member in the order of the document.
  template <class Visit>
  void eachMember(Visit visit) const {
    if (!isObject()) fail("expected an object");
    for (auto const& member : value_->GetObject()) {
      std::string_view const name(member.name.GetString(), member.name.GetStringLength());
      visit(name, JsonIn(member.value, this, name));
    }
  }
  /// Calls `visit(JsonIn const&)` for each element.
  template <class Visit>
  void eachElement(Visit visit) const {
    if (!isArray()) fail("expected an array");
    for (std::size_t i = 0; i < size(); ++i) visit(element(i));
  }

 private:
  static constexpr std::size_t noIndex = std::numeric_limits<std::size_t>::max();

  rapidjson::Value const* value_;
  JsonIn const* parent_;
  std::string_view key_;
  std::size_t index_ = noIndex;
};

/// A value that is a number in a document, such as a range-checked integer or an id.
template <class T>
concept NumberLike = HasParse<T> && requires(std::uint64_t number) {
  { T::fromNumber(number) } -> std::same_as<std::optional<T>>;
};

template <class T>
concept SequenceLike = requires(T& sequence, typename T::value_type value) {
  sequence.insert(sequence.end(), value);
  sequence.begin();
  sequence.clear();
}
&&!std::is_convertible_v<T const&, std::string_view>;

/// What a `T` is, for messages: `expectedText(T const*)` beside the type says it in its own words.
template <class T>
std::string expectedOf() {
  if constexpr (requires(T const* type) { expectedText(type); }) {
    return std::string("expected ").append(expectedText(static_cast<T const*>(nullptr)));
  } else if constexpr (DescribedEnum<T>) {
    std::string names = "expected one of";
    boost::mp11::mp_for_each<boost::describe::describe_enumerators<T>>(
        [&](auto enumerator) { names.append(" ").append(TextImpl::withoutTrailingUnderscore(enumerator.name)); });
    return names;
  } else {
    return "expected another text";
  }
}

/// The JSON form of a `T`; specialise it for a type whose form is none of those below.
///
/// `fromJson` writes `value` only when all of it is good.
template <class T>
struct JsonTraits {
  static void toJson(T const& value, JsonOut& out);
  static void fromJson(T& value, JsonIn const& in);
};

template <class T>
void writeJson(T const& value, JsonOut out) {
  JsonTraits<T>::toJson(value, out);
}

template <class T>
void readJson(T& value, JsonIn const& in) {
  JsonTraits<T>::fromJson(value, in);
}

namespace JsonImpl {

template <class T>
void numberToJson(T value, JsonOut& out) {
  if constexpr (std::is_floating_point_v<T>) {
    out.number(static_cast<double>(value));
  } else if constexpr (std::is_signed_v<T>) {
    out.number(static_cast<std::int64_t>(value));
  } else {
    out.number(static_cast<std::uint64_t>(value));
  }
}

template <class T>
T numberFromJson(JsonIn const& in) {
  using Limits = std::numeric_limits<T>;
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(in.number());
  } else if constexpr (std::is_signed_v<T>) {
    return static_cast<T>(in.signedNumber(Limits::min(), Limits::max()));
  } else {
    return static_cast<T>(in.unsignedNumber(Limits::min(), Limits::max()));
  }
}

/// Text or number, where the number is read through its decimal text.
template <class T>
void readAsText(T& value, JsonIn const& in) {
  bool good = false;
  if (in.isText()) {
    good = readText(in.text(), value);
  } else if (DescribedEnum<T> && in.value().IsUint64()) {
    good = readText(toText(in.value().GetUint64()), value);
  }
  if (!good) in.fail(expectedOf<T>());
}

template <class T>
void readNumberLike(T& value, JsonIn const& in) {
  if (in.isText()) return readAsText(value, in);
  auto const number = in.value().IsUint64() ? T::fromNumber(in.value().GetUint64()) : std::nullopt;
  if (!number) in.fail(expectedOf<T>());
  value = *number;
}

/// A number-like value that has no number, such as "none", goes out as its text.
template <class T>
void writeNumberLike(T const& value, JsonOut& out) {
  auto const text = toText(value);
  std::uint64_t number = 0;
  if (readText(text, number)) return out.number(number);
  out.text(text);
}

template <class T>
void readStruct(T& value, JsonIn const& in) {
  T fresh{};
  in.eachMember([&](std::string_view name, JsonIn const& member) {
    bool known = false;
    std::string names;
    described::forEachField(fresh, [&](std::string_view field, auto& slot) {
      if (name == field) known = (readJson(slot, member), true);
    });
    if (known) return;
    described::forEachField(fresh, [&](std::string_view field, auto&) { names.append(" ").append(field); });
    member.fail("unknown member, expected one of" + names);
  });
  value = std::move(fresh);
}

template <class T>
void readSequence(T& value, JsonIn const& in) {
  T fresh{};
  in.eachElement([&](JsonIn const& element) {
    typename T::value_type item{};
    readJson(item, element);
    fresh.insert(fresh.end(), std::move(item));
  });
  value = std::move(fresh);
}

template <class T>
ValueCodec makeCodec(std::string_view name) {
  ValueCodec codec{.typeName = name,
                   .toJson = [](void const* v, JsonOut& out) { writeJson(*static_cast<T const*>(v), out); },
                   .fromJson = [](void* v, JsonIn const& in) { readJson(*static_cast<T*>(v), in); },
                   .toText = [](void const* v, std::string& out) { writeText(out, *static_cast<T const*>(v)); },
                   .fromText = nullptr};
  if constexpr (HasParse<T>) {
    codec.fromText = [](std::string_view text, void* v) { return readText(text, *static_cast<T*>(v)); };
  }
  return codec;
}

}  // namespace JsonImpl

template <class T>
void JsonTraits<T>::toJson(T const& value, JsonOut& out) {
  if constexpr (std::same_as<T, bool>) {
    out.boolean(value);
  } else if constexpr (std::is_arithmetic_v<T>) {
    JsonImpl::numberToJson(value, out);
  } else if constexpr (NumberLike<T>) {
    JsonImpl::writeNumberLike(value, out);
  } else if constexpr (DescribedEnum<T>) {
    auto const name = enumName(value);
    if (name.empty()) return JsonImpl::numberToJson(static_cast<std::underlying_type_t<T>>(value), out);
    out.text(name);
  } else if constexpr (HasParse<T>) {
    out.text(toText(value));
  } else if constexpr (described::Struct<T>) {
    out.object();
    described::forEachField(value,
                            [&](std::string_view name, auto const& member) { writeJson(member, out.member(name)); });
  } else {
    static_assert(SequenceLike<T>, "the type has no JSON form");
    out.array();
    for (auto const& item : value) writeJson(item, out.element());
  }
}

template <class T>
void JsonTraits<T>::fromJson(T& value, JsonIn const& in) {
  if constexpr (std::same_as<T, bool>) {
    value = in.boolean();
  } else if constexpr (std::is_arithmetic_v<T>) {
    value = JsonImpl::numberFromJson<T>(in);
  } else if constexpr (std::same_as<T, std::string>) {
    value = in.text();
  } else if constexpr (NumberLike<T>) {
    JsonImpl::readNumberLike(value, in);
  } else if constexpr (HasParse<T>) {
    JsonImpl::readAsText(value, in);
  } else if constexpr (described::Struct<T>) {
    JsonImpl::readStruct(value, in);
  } else {
    static_assert(SequenceLike<T>, "the type has no JSON form");
    JsonImpl::readSequence(value, in);
  }
}

}  // namespace Kiln

/// Defines the codec of `T` under `name`, in a source file at global scope.
#define KILN_VALUE_CODEC(T, name)                                               \
  template <>                                                                   \
  ::Kiln::ValueCodec const& Kiln::codecOf<T>() {                                \
    static ::Kiln::ValueCodec const codec = Kiln::JsonImpl::makeCodec<T>(name); \
    return codec;                                                               \
  }
