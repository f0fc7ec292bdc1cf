#include "platform/kiln/JsonOut.h"

#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <sstream>
#include <type_traits>

namespace Kiln {

using rapidjson::SizeType;

/// What rapidjson's two writers, which share no interface, have in common here.
class JsonWriter::Sink {
 public:
  virtual ~Sink() = default;
  virtual void key(std::string_view name) = 0;
  virtual void object() = 0;
  virtual void objectEnd() = 0;
  virtual void array() = 0;
  virtual void arrayEnd() = 0;
  virtual void text(std::string_view value) = 0;
  virtual void number(std::uint64_t value) = 0;
  virtual void number(std::int64_t value) = 0;
  virtual void number(double value) = 0;
  virtual void boolean(bool value) = 0;
  virtual void null() = 0;
};

template <class Writer>
class JsonWriter::SinkOf final : public Sink {
 public:
  explicit SinkOf(std::ostream& out) : stream_(out), writer_(stream_) {
    if constexpr (requires { writer_.SetIndent(' ', 2); }) writer_.SetIndent(' ', 2);
  }
  void key(std::string_view name) override { writer_.Key(name.data(), static_cast<SizeType>(name.size())); }
  void object() override { writer_.StartObject(); }
  void objectEnd() override { writer_.EndObject(); }
  void array() override { writer_.StartArray(); }
  void arrayEnd() override { writer_.EndArray(); }
  void text(std::string_view value) override { writer_.String(value.data(), static_cast<SizeType>(value.size())); }
  void number(std::uint64_t value) override { writer_.Uint64(value); }
  void number(std::int64_t value) override { writer_.Int64(value); }
  void number(double value) override { writer_.Double(value); }
  void boolean(bool value) override { writer_.Bool(value); }
  void null() override { writer_.Null(); }

 private:
  rapidjson::OStreamWrapper stream_;
  Writer writer_;
};

JsonWriter::JsonWriter(std::ostream& out, Layout layout) {
  if (layout == Layout::indented) {
    sink_ = std::make_unique<SinkOf<rapidjson::PrettyWriter<rapidjson::OStreamWrapper>>>(out);
  } else {
    sink_ = std::make_unique<SinkOf<rapidjson::Writer<rapidjson::OStreamWrapper>>>(out);
  }
}

JsonWriter::~JsonWriter() = default;

JsonWriter& JsonWriter::key(std::string_view name) {
  sink_->key(name);
  return *this;
}

void JsonWriter::object() { sink_->object(); }
void JsonWriter::objectEnd() { sink_->objectEnd(); }
void JsonWriter::array() { sink_->array(); }
void JsonWriter::arrayEnd() { sink_->arrayEnd(); }
void JsonWriter::text(std::string_view value) { sink_->text(value); }
void JsonWriter::number(std::uint64_t value) { sink_->number(value); }
void JsonWriter::number(std::int64_t value) { sink_->number(value); }
void JsonWriter::number(double value) { sink_->number(value); }
void JsonWriter::boolean(bool value) { sink_->boolean(value); }
void JsonWriter::null() { sink_->null(); }

JsonWriter& JsonOut::at() {
  root_->close(depth_);
  return root_->writer_;
}

void JsonOut::object() {
  at().object();
  root_->open_.push_back(true);
}

void JsonOut::array() {
  at().array();
  root_->open_.push_back(false);
}

JsonOut JsonOut::member(std::string_view name) {
  JsonOut const place(*root_, depth_ + 1);
  JsonOut(place).at().key(name);
  return place;
}

JsonOut JsonOut::element() { return {*root_, depth_ + 1}; }

void JsonRoot::close(std::size_t depth) {
  for (; open_.size() > depth; open_.pop_back()) open_.back() ? writer_.objectEnd() : writer_.arrayEnd();
}

std::string jsonText(FunctionRef<void(JsonOut)> write) {
  std::ostringstream text;
  {
    JsonWriter writer(text, JsonWriter::Layout::compact);
    JsonRoot root(writer);
    write(root.out());
  }
  return std::move(text).str();
}

}  // namespace Kiln
