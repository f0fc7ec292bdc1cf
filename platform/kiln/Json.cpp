#include "platform/kiln/Json.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Kiln {
namespace {

constexpr std::size_t shownLength = 80;

rapidjson::SizeType sizeOf(std::string_view text) { return static_cast<rapidjson::SizeType>(text.size()); }

std::string shown(rapidjson::Value const& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  std::string text(buffer.GetString(), buffer.GetSize());
  if (text.size() <= shownLength) return text;
  std::size_t end = shownLength;
  // Not in the middle of a UTF-8 character.
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  text.resize(end);
  return text;
}

void appendPointerToken(std::string& out, std::string_view key) {
  out += '/';
  for (char const c : key) {
    if (c == '~') {
      out += "~0";
    } else if (c == '/') {
      out += "~1";
    } else {
      out += c;
    }
  }
}

template <class T>
std::string expectedWhole(T min, T max) {
  return "expected a whole number from " + toText(min) + " to " + toText(max);
}

}  // namespace

void JsonOut::text(std::string_view value) { value_->SetString(value.data(), sizeOf(value), *allocator_); }

JsonOut JsonOut::member(std::string_view name) {
  value_->AddMember(rapidjson::Value(name.data(), sizeOf(name), *allocator_), rapidjson::Value(), *allocator_);
  return {(value_->MemberEnd() - 1)->value, *allocator_};
}

JsonOut JsonOut::element() {
  value_->PushBack(rapidjson::Value(), *allocator_);
  return {*(value_->End() - 1), *allocator_};
}

void JsonIn::fail(std::string const& expected) const { throw ValueError(path(), shown(*value_), expected); }

std::string JsonIn::path() const {
  if (!parent_) return {};
  std::string path = parent_->path();
  appendPointerToken(path, index_ == noIndex ? key_ : std::string_view(toText(index_)));
  return path;
}

bool JsonIn::boolean() const {
  if (!value_->IsBool()) fail("expected true or false");
  return value_->GetBool();
}

std::string_view JsonIn::text() const {
  if (!value_->IsString()) fail("expected a string");
  return {value_->GetString(), value_->GetStringLength()};
}

std::uint64_t JsonIn::unsignedNumber(std::uint64_t min, std::uint64_t max) const {
  if (!value_->IsUint64() || value_->GetUint64() < min || value_->GetUint64() > max) fail(expectedWhole(min, max));
  return value_->GetUint64();
}

std::int64_t JsonIn::signedNumber(std::int64_t min, std::int64_t max) const {
  if (!value_->IsInt64() || value_->GetInt64() < min || value_->GetInt64() > max) fail(expectedWhole(min, max));
  return value_->GetInt64();
}

double JsonIn::number() const {
  if (!value_->IsNumber()) fail("expected a number");
  return value_->GetDouble();
}

std::optional<JsonIn> JsonIn::find(std::string_view name) const& {
  if (!isObject()) fail("expected an object");
  auto const found = value_->FindMember(rapidjson::Value(rapidjson::StringRef(name.data(), sizeOf(name))));
  if (found == value_->MemberEnd()) return std::nullopt;
  return JsonIn(found->value, this, {found->name.GetString(), found->name.GetStringLength()});
}

JsonIn JsonIn::member(std::string_view name) const& {
  auto const found = find(name);
  if (!found) fail("expected a member \"" + std::string(name) + "\"");
  return *found;
}

std::size_t JsonIn::size() const {
  if (isObject()) return value_->MemberCount();
  return isArray() ? value_->Size() : 0;
}

JsonIn JsonIn::element(std::size_t index) const& {
  JsonIn in((*value_)[static_cast<rapidjson::SizeType>(index)], this);
  in.index_ = index;
  return in;
}

}  // namespace Kiln
