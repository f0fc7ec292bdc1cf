#include "host/json/JsonFile.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include "host/InputError.h"

namespace Host {

namespace {

constexpr int maxDepth = 64;
constexpr std::size_t maxShown = 80;

std::string readWhole(std::filesystem::path const& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw InputError(path.string(), "", "a directory", "a JSON file");
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  auto const unreadable = [&] {
    auto const why = errno != 0 ? std::generic_category().message(errno) : std::string("a read error");
    return InputError(path.string(), "", "nothing readable (" + why + ")", "a JSON file");
  };
  if (!stream) throw unreadable();
  try {
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (stream.bad()) throw unreadable();
    return text;
  } catch (std::ios_base::failure const&) {
    throw unreadable();
  }
}

std::string placeOf(std::string const& text, std::size_t offset) {
  auto const end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
  auto const line = 1 + std::count(text.begin(), end, '\n');
  auto const lineStart = std::find(std::reverse_iterator(end), text.rend(), '\n').base();
  return fmt::format("line {}, column {}", line, 1 + (end - lineStart));
}

std::string foundAt(std::string const& text, std::size_t offset) {
  if (offset >= text.size()) return "the end of the file";
  auto const byte = static_cast<unsigned char>(text[offset]);
  if (byte == '\n') return "the end of the line";
  if (byte < 0x20 || byte >= 0x7f) return fmt::format("the byte 0x{:02x}", byte);
  return fmt::format("'{}'", text[offset]);
}

char const* expectedBy(rapidjson::ParseErrorCode code) {
  switch (code) {
    case rapidjson::kParseErrorDocumentRootNotSingular:
      return "nothing after the first value";
    case rapidjson::kParseErrorObjectMissName:
      return "a name in double quotes";
    case rapidjson::kParseErrorObjectMissColon:
      return "':' after the name";
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
      return "',' or '}'";
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
      return "',' or ']'";
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
      return "four hexadecimal digits after \\u";
    case rapidjson::kParseErrorStringUnicodeSurrogateInvalid:
      return "a surrogate pair";
    case rapidjson::kParseErrorStringEscapeInvalid:
      return "an escape that JSON knows";
    case rapidjson::kParseErrorStringMissQuotationMark:
      return "a closing double quote";
    case rapidjson::kParseErrorStringInvalidEncoding:
      return "UTF-8 text";
    case rapidjson::kParseErrorNumberTooBig:
      return "a number that fits 64 bits";
    case rapidjson::kParseErrorNumberMissFraction:
      return "digits after the point";
    case rapidjson::kParseErrorNumberMissExponent:
      return "digits after the exponent";
    default:
      return "a JSON value";
  }
}

/// Where the nesting first exceeds what is accepted; the length of the text where it never does.
std::size_t tooDeepAt(std::string const& text) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char const c = text[i];
    if (quoted && c == '\\') {
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && (c == '[' || c == '{')) {
      if (++depth > maxDepth) return i;
    } else if (!quoted && (c == ']' || c == '}')) {
      --depth;
    }
  }
  return text.size();
}

std::string escaped(std::string const& key) {
  std::string step;
  for (char const c : key) step += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  return step;
}

bool seek(rapidjson::Value const& from, rapidjson::Value const& wanted, std::string& pointer) {
  if (&from == &wanted) return true;
  auto const length = pointer.size();
  auto const below = [&](std::string const& step, rapidjson::Value const& child) {
    pointer += '/' + step;
    if (seek(child, wanted, pointer)) return true;
    pointer.resize(length);
    return false;
  };
  if (from.IsObject()) {
    return std::any_of(from.MemberBegin(), from.MemberEnd(),
                       [&](auto const& member) { return below(escaped(member.name.GetString()), member.value); });
  }
  if (!from.IsArray()) return false;
  for (rapidjson::SizeType i = 0; i < from.Size(); ++i) {
    if (below(std::to_string(i), from[i])) return true;
  }
  return false;
}

}  // namespace

JsonFile::JsonFile(std::filesystem::path path) : path_(std::move(path)) {
  auto const text = readWhole(path_);
  if (auto const deep = tooDeepAt(text); deep < text.size()) {
    throw InputError(name(), placeOf(text, deep), "one more level of nesting",
                     fmt::format("at most {} levels", maxDepth));
  }
  document_.Parse<rapidjson::kParseValidateEncodingFlag>(text.data(), text.size());
  if (document_.HasParseError()) {
    auto const offset = document_.GetErrorOffset();
    throw InputError(name(), placeOf(text, offset), foundAt(text, offset), expectedBy(document_.GetParseError()));
  }
}

JsonAt JsonFile::top() const { return {*this, document_}; }

std::string JsonFile::pointer(rapidjson::Value const& value) const {
  std::string pointer;
  return seek(document_, value, pointer) && !pointer.empty() ? pointer : "top level";
}

std::optional<JsonAt> JsonAt::find(std::string_view key) const {
  if (!value_->IsObject()) fail("an object");
  auto const size = static_cast<rapidjson::SizeType>(key.size());
  auto const member = value_->FindMember(rapidjson::Value(rapidjson::StringRef(key.data(), size)));
  if (member == value_->MemberEnd()) return std::nullopt;
  return JsonAt(*file_, member->value);
}

JsonAt JsonAt::at(std::string_view key) const {
  auto const member = find(key);
  if (!member) fail(fmt::format("a member \"{}\"", key));
  return *member;
}

std::string JsonAt::text() const {
  if (!value_->IsString()) fail("a string");
  return {value_->GetString(), value_->GetStringLength()};
}

std::uint32_t JsonAt::number(std::uint32_t least, std::uint32_t most) const {
  if (!value_->IsUint() || value_->GetUint() < least || value_->GetUint() > most) {
    fail(fmt::format("a number from {} to {}", least, most));
  }
  return value_->GetUint();
}

std::vector<JsonAt> JsonAt::objects() const {
  if (!value_->IsArray()) fail("an array of objects");
  std::vector<JsonAt> elements;
  elements.reserve(value_->Size());
  for (auto const& element : value_->GetArray()) {
    JsonAt const here(*file_, element);
    if (!element.IsObject()) here.fail("an object");
    if (!element.ObjectEmpty()) elements.push_back(here);
  }
  return elements;
}

std::optional<std::string> JsonAt::text(std::string_view key) const {
  auto const member = find(key);
  return member ? std::optional(member->text()) : std::nullopt;
}

std::optional<std::uint32_t> JsonAt::number(std::string_view key) const {
  auto const member = find(key);
  return member ? std::optional(member->number()) : std::nullopt;
}

bool JsonAt::flag(std::string_view key, std::string_view word) const {
  auto const member = find(key);
  if (!member) return false;
  if (!member->value_->IsArray()) member->fail("an array of words");
  auto const words = member->value_->GetArray();
  return std::any_of(words.begin(), words.end(), [&](auto const& each) { return JsonAt(*file_, each).text() == word; });
}

std::string JsonAt::shown() const {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value_->Accept(writer);
  std::string text(buffer.GetString(), buffer.GetSize());
  if (text.size() <= maxShown) return text;
  auto end = maxShown;
  while ((static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;  // no half character
  return text.substr(0, end) + "...";
}

void JsonAt::fail(std::string const& expected) const { throw InputError(file(), place(), shown(), expected); }

}  // namespace Host
