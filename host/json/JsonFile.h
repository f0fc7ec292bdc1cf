#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

class JsonAt;

/// One JSON file, read and parsed as a whole.
///
/// Immutable after construction. A `JsonAt` points into it, so it neither moves nor is copied and outlives every one.
class JsonFile {
 public:
  /// Throws InputError where the file cannot be read (no place) or is no JSON (place "line L, column C").
  /// Nesting deeper than 64 levels is refused, so that walking a document never exhausts the stack.
  explicit JsonFile(std::filesystem::path path);
  JsonFile(JsonFile const&) = delete;
  JsonFile& operator=(JsonFile const&) = delete;

  std::string name() const { return path_.string(); }
  JsonAt top() const;
  /// The document itself; the file is empty afterwards.
  rapidjson::Document documentTake() && { return std::move(document_); }

  /// The JSON pointer of a value of this file. It is searched for, because it is only wanted in errors.
  std::string pointer(rapidjson::Value const& value) const;

 private:
  std::filesystem::path path_;
  rapidjson::Document document_;
};

/// A value of a file, together with where it stands; each reader below throws InputError if the value is another thing.
///
/// A light reference, good as long as its file. A key whose value is null counts as present: some producers write a set
/// flag that way.
class JsonAt {
 public:
  JsonAt(JsonFile const& file, rapidjson::Value const& value) : file_(&file), value_(&value) {}

  /// The member of that name of an object; nothing where there is none.
  std::optional<JsonAt> find(std::string_view key) const;
  /// The same, where the object is of no use without it.
  JsonAt at(std::string_view key) const;
  bool has(std::string_view key) const { return find(key).has_value(); }

  std::string text() const;
  std::uint32_t number(std::uint32_t least = 0, std::uint32_t most = std::numeric_limits<std::uint32_t>::max()) const;
  /// The elements of an array of objects. Empty objects are left out: they stand for what a filter suppressed.
  std::vector<JsonAt> objects() const;

  std::optional<std::string> text(std::string_view key) const;
  std::optional<std::uint32_t> number(std::string_view key) const;
  /// Whether the array of words under that name holds the word; no array holds none.
  bool flag(std::string_view key, std::string_view word) const;

  std::string file() const { return file_->name(); }
  std::string place() const { return file_->pointer(*value_); }
  /// The value as JSON, cut where it is long.
  std::string shown() const;
  [[noreturn]] void fail(std::string const& expected) const;

 private:
  JsonFile const* file_;
  rapidjson::Value const* value_;
};

}  // namespace Host
