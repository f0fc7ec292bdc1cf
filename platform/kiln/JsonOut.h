#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiln/FunctionRef.h"

namespace Kiln {

/// Writes JSON text to a stream while it is produced, a value at a time. Nothing is kept in memory.
class JsonWriter {
 public:
  enum class Layout { compact, indented };

  /// REQUIRES: `out` outlives this object.
  JsonWriter(std::ostream& out, Layout layout);
  ~JsonWriter();
  JsonWriter(JsonWriter const&) = delete;
  JsonWriter& operator=(JsonWriter const&) = delete;

  JsonWriter& key(std::string_view name);
  void object();
  void objectEnd();
  void array();
  void arrayEnd();
  void text(std::string_view value);
  void number(std::uint64_t value);
  void number(std::int64_t value);
  void number(double value);
  void boolean(bool value);
  void null();

  // Null where there is none.
  void number(std::optional<std::uint32_t> const& value) { value ? number(std::uint64_t{*value}) : null(); }
  void text(std::optional<std::string> const& value) { value ? text(std::string_view(*value)) : null(); }

 private:
  class Sink;
  template <class Writer>
  class SinkOf;
  std::unique_ptr<Sink> sink_;
};

class JsonRoot;

/// One place of a JSON text that is being written.
///
/// Values are written in the order of the text: a place that `member` or `element` returned is valid until the next
/// call of either on the same or an enclosing place. Objects and arrays are closed when the text continues behind them,
/// the last ones by the `JsonRoot`.
class JsonOut {
 public:
  void null() { at().null(); }
  void boolean(bool value) { at().boolean(value); }
  void number(std::uint64_t value) { at().number(value); }
  void number(std::int64_t value) { at().number(value); }
  void number(double value) { at().number(value); }
  void text(std::string_view value) { at().text(value); }
  void object();
  void array();

  /// The place of a new member, where a value has to be written. REQUIRES: `object()` was called.
  JsonOut member(std::string_view name);
  /// The place of a new last element, where a value has to be written. REQUIRES: `array()` was called.
  JsonOut element();

 private:
  friend class JsonRoot;
  JsonOut(JsonRoot& root, std::size_t depth) : root_(&root), depth_(depth) {}
  /// The writer, after closing what does not enclose this place.
  JsonWriter& at();

  JsonRoot* root_;
  std::size_t depth_;  ///< How many containers enclose this place.
};

/// The value that is written to `writer` at its current point; complete when the root is destroyed.
class JsonRoot {
 public:
  explicit JsonRoot(JsonWriter& writer) : writer_(writer) {}
  ~JsonRoot() { close(0); }
  JsonRoot(JsonRoot const&) = delete;
  JsonRoot& operator=(JsonRoot const&) = delete;

  JsonOut out() { return {*this, 0}; }

 private:
  friend class JsonOut;
  void close(std::size_t depth);

  JsonWriter& writer_;
  std::vector<bool> open_;  ///< For each container whether it is an object.
};

/// The JSON that `write` puts into the place it is given, in one line without spaces.
std::string jsonText(FunctionRef<void(JsonOut)> write);

}  // namespace Kiln
