#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/kiln/JsonIn.h"
#include "platform/kiln/JsonOut.h"
#include "platform/kiln/Text.h"

namespace Kiln {

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

/// A number-like value that has no number, such as "none", is written as its text.
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
  ValueCodec codec{
      .typeName = name,
      .make = [](void const* from) -> void* { return from ? new T(*static_cast<T const*>(from)) : new T{}; },
      .drop = [](void* v) { delete static_cast<T*>(v); },
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
