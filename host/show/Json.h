#pragma once

#include <rapidjson/document.h>
#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace Host {

/// Writes JSON to a stream while it is made, indented, a value at a time.
class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : stream_(out), writer_(stream_) { writer_.SetIndent(' ', 2); }

  JsonWriter& key(std::string_view name) {
    writer_.Key(name.data(), sizeOf(name));
    return *this;
  }
  void object() { writer_.StartObject(); }
  void objectEnd() { writer_.EndObject(); }
  void array() { writer_.StartArray(); }
  void arrayEnd() { writer_.EndArray(); }
  void text(std::string_view value) { writer_.String(value.data(), sizeOf(value)); }
  void number(std::uint64_t value) { writer_.Uint64(value); }
  void boolean(bool value) { writer_.Bool(value); }
  void null() { writer_.Null(); }
  void value(rapidjson::Value const& value) { value.Accept(writer_); }

  // Null where there is none.
  void number(std::optional<std::uint32_t> const& value) { value ? number(std::uint64_t{*value}) : null(); }
  void text(std::optional<std::string> const& value) { value ? text(std::string_view(*value)) : null(); }

 private:
  static rapidjson::SizeType sizeOf(std::string_view text) { return static_cast<rapidjson::SizeType>(text.size()); }

  rapidjson::OStreamWrapper stream_;
  rapidjson::PrettyWriter<rapidjson::OStreamWrapper> writer_;
};

}  // namespace Host
