#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/kiln/Exceptions.h"

namespace Kiln {

class JsonIn;

/// A JSON text with the name of its source: the one reader for state documents, profiles, toggles and captures.
///
/// Immutable once read. A `JsonIn` refers into it and is valid until the document is moved or destroyed.
class JsonDocument {
 public:
  /// What is read at most: far above any real input, so that no input exhausts stack or memory.
  struct Limits {
    std::size_t depth = 64;
    std::size_t values = std::size_t{16} << 20;
    std::size_t bytes = std::size_t{256} << 20;
    /// Reads what programs that print no exact JSON print: an object may have several members of one name, of which the
    /// first counts; a string may have control characters, `\'` and bytes that are not UTF-8, which become '?'.
    bool lenient = false;
  };

  /// An empty object without a source.
  JsonDocument() { json_.SetObject(); }
  /// A document that the program built; `source` names it in errors.
  JsonDocument(rapidjson::Document json, std::string source) : json_(std::move(json)), source_(std::move(source)) {}

  /// Reads a text. Throws `InputError` for one that is no JSON, is not UTF-8, exceeds a limit, or has an object with
  /// two members of one name. Parsing uses no recursion.
  static JsonDocument parse(std::string_view text, std::string source, Limits const& limits);
  static JsonDocument parse(std::string_view text, std::string source) { return parse(text, std::move(source), {}); }
  /// The same for a file. Throws `InputError` also for one that cannot be read.
  static JsonDocument read(std::string const& file, Limits const& limits);
  static JsonDocument read(std::string const& file) { return read(file, {}); }

  std::string const& source() const { return source_; }
  rapidjson::Document const& json() const { return json_; }
  JsonIn root() const;

 private:
  static JsonDocument parseExact(std::string_view text, std::string source, Limits const& limits);

  rapidjson::Document json_;
  std::string source_;
};

/// One place of a JSON document that is being read.
///
/// A light reference to document and value, to be passed by value; the place is searched for when something is wrong.
/// Every reader throws `InputError` with file, place and value when the document holds something else.
class JsonIn {
 public:
  /// REQUIRES: `value` is part of `document`.
  JsonIn(JsonDocument const& document, rapidjson::Value const& value) : document_(&document), value_(&value) {}

  /// Throws `InputError` for this place.
  [[noreturn]] void fail(std::string const& problem) const;
  /// As a JSON pointer: "" for the document, "/stateway/vxlan~1config/x" for a member further down.
  std::string path() const;
  /// The value as JSON text, cut to about 80 characters.
  std::string shown() const;
  std::string const& source() const { return document_->source(); }
  rapidjson::Value const& value() const { return *value_; }

  bool isObject() const { return value_->IsObject(); }
  bool isArray() const { return value_->IsArray(); }
  bool isText() const { return value_->IsString(); }
  bool isNull() const { return value_->IsNull(); }

  bool boolean() const;
  std::string_view text() const;
  /// A whole number from `min` to `max`.
  std::uint64_t unsignedNumber(std::uint64_t min, std::uint64_t max) const;
  std::int64_t signedNumber(std::int64_t min, std::int64_t max) const;
  double number() const;

  /// The member of that name; `find` returns nothing when there is none, `member` throws.
  std::optional<JsonIn> find(std::string_view name) const;
  JsonIn member(std::string_view name) const;
  /// Members or elements. 0 for anything else.
  std::size_t size() const;

  /// Calls `visit(name, JsonIn const&)` for each member in the order of the document.
  template <class Visit>
  void eachMember(Visit visit) const {
    if (!isObject()) fail("expected an object");
    for (auto const& member : value_->GetObject()) {
      visit(std::string_view(member.name.GetString(), member.name.GetStringLength()), JsonIn(*document_, member.value));
    }
  }
  /// Calls `visit(JsonIn const&)` for each element.
  template <class Visit>
  void eachElement(Visit visit) const {
    if (!isArray()) fail("expected an array");
    for (auto const& element : value_->GetArray()) visit(JsonIn(*document_, element));
  }

 private:
  JsonDocument const* document_;
  rapidjson::Value const* value_;
};

inline JsonIn JsonDocument::root() const { return {*this, json_}; }

}  // namespace Kiln
