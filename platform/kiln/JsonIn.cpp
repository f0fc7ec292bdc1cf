#include "platform/kiln/JsonIn.h"

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "platform/kiln/Text.h"

namespace Kiln {

namespace {

using rapidjson::SizeType;
using rapidjson::Value;

std::string_view textOf(Value const& value) { return {value.GetString(), value.GetStringLength()}; }

/// Passes on to a document what a parser finds, until a limit is exceeded.
class LimitedHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, LimitedHandler> {
 public:
  LimitedHandler(rapidjson::Document& document, JsonDocument::Limits const& limits)
      : document_(document), limits_(limits) {}

  /// What exceeds a limit; empty if nothing does.
  std::string const& found() const { return found_; }
  std::string const& expected() const { return expected_; }

  bool Null() { return count() && document_.Null(); }
  bool Bool(bool value) { return count() && document_.Bool(value); }
  bool Int(int value) { return count() && document_.Int(value); }
  bool Uint(unsigned value) { return count() && document_.Uint(value); }
  bool Int64(std::int64_t value) { return count() && document_.Int64(value); }
  bool Uint64(std::uint64_t value) { return count() && document_.Uint64(value); }
  bool Double(double value) { return count() && document_.Double(value); }
  bool String(char const* text, SizeType size, bool copy) { return count() && document_.String(text, size, copy); }
  bool Key(char const* text, SizeType size, bool copy) { return document_.Key(text, size, copy); }
  bool StartObject() { return enter() && document_.StartObject(); }
  bool StartArray() { return enter() && document_.StartArray(); }
  bool EndObject(SizeType members) { return --depth_, document_.EndObject(members); }
  bool EndArray(SizeType elements) { return --depth_, document_.EndArray(elements); }

 private:
  bool count() { return ++values_ <= limits_.values || exceeds("one more value", limits_.values, "values"); }
  bool enter() {
    return ++depth_ <= limits_.depth ? count() : exceeds("one more level of nesting", limits_.depth, "levels");
  }
  bool exceeds(char const* found, std::size_t limit, char const* what) {
    found_ = found;
    expected_ = "expected at most " + toText(limit) + " " + what;
    return false;
  }

  rapidjson::Document& document_;
  std::size_t depth_ = 0;
  std::size_t values_ = 0;
  JsonDocument::Limits limits_;
  std::string found_;
  std::string expected_;
};

std::string lineAndColumn(std::string_view text, std::size_t offset) {
  auto const before = text.substr(0, offset);
  auto const line = 1 + std::count(before.begin(), before.end(), '\n');
  auto const lineStart = before.rfind('\n') + 1;  // 0 where there is none
  return "line " + toText(line) + ", column " + toText(before.size() - lineStart + 1);
}

std::string foundAt(std::string_view text, std::size_t offset) {
  if (offset >= text.size()) return "the end of the text";
  auto const byte = static_cast<unsigned char>(text[offset]);
  if (byte == '\n') return "the end of the line";
  if (byte >= 0x20 && byte < 0x7f) return std::string("'").append(1, text[offset]).append("'");
  constexpr auto digits = "0123456789abcdef";
  return std::string("the byte 0x").append({digits[byte >> 4], digits[byte & 0xf]});
}

char const* expectedBy(rapidjson::ParseErrorCode code) {
  switch (code) {
    case rapidjson::kParseErrorDocumentRootNotSingular:
      return "expected nothing after the first value";
    case rapidjson::kParseErrorObjectMissName:
      return "expected a name in double quotes";
    case rapidjson::kParseErrorObjectMissColon:
      return "expected ':' after the name";
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
      return "expected ',' or '}'";
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
      return "expected ',' or ']'";
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
      return "expected four hexadecimal digits after \\u";
    case rapidjson::kParseErrorStringUnicodeSurrogateInvalid:
      return "expected a surrogate pair";
    case rapidjson::kParseErrorStringEscapeInvalid:
      return "expected a character or an escape that JSON allows in a string";
    case rapidjson::kParseErrorStringMissQuotationMark:
      return "expected a closing double quote";
    case rapidjson::kParseErrorStringInvalidEncoding:
      return "expected UTF-8 text";
    case rapidjson::kParseErrorNumberTooBig:
      return "expected a number that fits 64 bits";
    case rapidjson::kParseErrorNumberMissFraction:
      return "expected digits after the point";
    case rapidjson::kParseErrorNumberMissExponent:
      return "expected digits after the exponent";
    default:
      return "expected a JSON value";
  }
}

/// A member that an object has a second time; null if all names differ.
Value const* repeatedName(Value const& object) {
  // For most objects this is faster than a set.
  constexpr std::size_t few = 24;
  if (object.MemberCount() <= few) {
    for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
      auto const name = textOf(member->name);
      for (auto former = object.MemberBegin(); former != member; ++former) {
        if (textOf(former->name) == name) return &member->value;
      }
    }
    return nullptr;
  }
  std::unordered_set<std::string_view> names;
  for (auto const& member : object.GetObject()) {
    if (!names.insert(textOf(member.name)).second) return &member.value;
  }
  return nullptr;
}

// Both walks below recurse only as deep as a document may nest.

Value const* repeatedNameBelow(Value const& value) {
  if (value.IsObject()) {
    if (auto const* repeated = repeatedName(value)) return repeated;
    for (auto const& member : value.GetObject()) {
      if (auto const* repeated = repeatedNameBelow(member.value)) return repeated;
    }
  } else if (value.IsArray()) {
    for (auto const& element : value.GetArray()) {
      if (auto const* repeated = repeatedNameBelow(element)) return repeated;
    }
  }
  return nullptr;
}

/// A name as a step of a JSON pointer. Control characters are escaped: errors are printed on terminals.
void appendStep(std::string& pointer, std::string_view name) {
  constexpr auto digits = "0123456789abcdef";
  pointer += '/';
  for (char const c : name) {
    auto const byte = static_cast<unsigned char>(c);
    if (c == '~') {
      pointer += "~0";
    } else if (c == '/') {
      pointer += "~1";
    } else if (byte < 0x20 || byte == 0x7f) {
      pointer.append("\\u00").append({digits[byte >> 4], digits[byte & 0xf]});
    } else {
      pointer += c;
    }
  }
}

bool seek(Value const& from, Value const& wanted, std::string& pointer) {
  if (&from == &wanted) return true;
  auto const length = pointer.size();
  auto const below = [&](std::string_view step, Value const& child) {
    appendStep(pointer, step);
    if (seek(child, wanted, pointer)) return true;
    pointer.resize(length);
    return false;
  };
  if (from.IsObject()) {
    return std::any_of(from.MemberBegin(), from.MemberEnd(),
                       [&](auto const& member) { return below(textOf(member.name), member.value); });
  }
  if (!from.IsArray()) return false;
  for (SizeType i = 0; i < from.Size(); ++i) {
    if (below(toText(i), from[i])) return true;
  }
  return false;
}

/// Keeps the beginning of what is written to it.
class Beginning {
 public:
  using Ch = char;
  void Put(char c) {
    if (text_.size() <= limit) text_ += c;
  }
  void Flush() {}

  std::string take() {
    if (text_.size() <= limit) return std::move(text_);
    auto end = limit;
    // Not in the middle of a UTF-8 character.
    while ((static_cast<unsigned char>(text_[end]) & 0xc0) == 0x80) --end;
    text_.resize(end);
    return std::move(text_ += "...");
  }

 private:
  static constexpr std::size_t limit = 80;
  std::string text_;
};

std::string readWhole(std::string const& name, std::size_t limit) {
  auto const unreadable = [&](int error) {
    return InputError(name, "", "nothing that can be read (" + std::generic_category().message(error) + ")",
                      "expected a JSON file");
  };
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(name.c_str(), "rb"), &std::fclose);
  if (!file) throw unreadable(errno);
  std::string text;
  std::vector<char> block(std::size_t{1} << 16);
  while (auto const size = std::fread(block.data(), 1, block.size(), file.get())) {
    text.append(block.data(), size);
    if (text.size() > limit) {
      throw InputError(name, "", "a longer file", "expected at most " + toText(limit) + " bytes");
    }
  }
  if (std::ferror(file.get())) throw unreadable(errno);
  return text;
}

/// The text with what a lenient reader accepts in strings replaced.
std::string repaired(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto const c = text[i];
    auto const byte = static_cast<unsigned char>(c);
    if (inString && c == '\\' && i + 1 < text.size()) {
      if (text[++i] != '\'') result += c;
      result += text[i];
    } else {
      if (c == '"') inString = !inString;
      result += inString && (byte < 0x20 || byte > 0x7e) ? '?' : c;
    }
  }
  return result;
}

template <class T>
std::string expectedWhole(T min, T max) {
  return "expected a whole number from " + toText(min) + " to " + toText(max);
}

}  // namespace

JsonDocument JsonDocument::parse(std::string_view text, std::string source, Limits const& limits) {
  if (!limits.lenient) return parseExact(text, std::move(source), limits);
  try {
    return parseExact(text, source, limits);
  } catch (InputError const&) {
    try {
      return parseExact(repaired(text), source, limits);
    } catch (InputError const&) {
      // The error about the original text has the right place.
    }
    throw;
  }
}

JsonDocument JsonDocument::parseExact(std::string_view text, std::string source, Limits const& limits) {
  rapidjson::Document json;
  LimitedHandler handler(json, limits);
  rapidjson::MemoryStream bytes(text.data(), text.size());
  rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
  rapidjson::Reader reader;
  rapidjson::ParseResult result;
  auto const generate = [&](auto&) {
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag;
    // Most texts are ASCII, whose encoding need not be examined string by string.
    bool const ascii = std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
    result = ascii ? reader.Parse<flags>(stream, handler)
                   : reader.Parse<flags | rapidjson::kParseValidateEncodingFlag>(stream, handler);
    return !result.IsError();
  };
  json.Populate(generate);
  // The parser regards a zero byte as the end.
  if (!result.IsError() && bytes.Tell() < text.size()) {
    result.Set(rapidjson::kParseErrorDocumentRootNotSingular, bytes.Tell());
  }
  if (result.IsError()) {
    auto const offset = std::min(result.Offset(), text.size());
    throw InputError(std::move(source), lineAndColumn(text, offset),
                     handler.found().empty() ? foundAt(text, offset) : handler.found(),
                     handler.found().empty() ? expectedBy(result.Code()) : handler.expected());
  }
  JsonDocument document(std::move(json), std::move(source));
  if (auto const* repeated = limits.lenient ? nullptr : repeatedNameBelow(document.json_)) {
    JsonIn(document, *repeated).fail("expected one member of this name");
  }
  return document;
}

JsonDocument JsonDocument::read(std::string const& file, Limits const& limits) {
  return parse(readWhole(file, limits.bytes), file, limits);
}

void JsonIn::fail(std::string const& problem) const { throw InputError(source(), path(), shown(), problem); }

std::string JsonIn::path() const {
  std::string pointer;
  seek(document_->json(), *value_, pointer);
  return pointer;
}

std::string JsonIn::shown() const {
  Beginning text;
  rapidjson::Writer<Beginning> writer(text);
  value_->Accept(writer);
  return text.take();
}

bool JsonIn::boolean() const {
  if (!value_->IsBool()) fail("expected true or false");
  return value_->GetBool();
}

std::string_view JsonIn::text() const {
  if (!value_->IsString()) fail("expected a string");
  return textOf(*value_);
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

std::optional<JsonIn> JsonIn::find(std::string_view name) const {
  if (!isObject()) fail("expected an object");
  auto const found = value_->FindMember(Value(rapidjson::StringRef(name.data(), static_cast<SizeType>(name.size()))));
  if (found == value_->MemberEnd()) return std::nullopt;
  return JsonIn(*document_, found->value);
}

JsonIn JsonIn::member(std::string_view name) const {
  auto const found = find(name);
  if (!found) fail("expected a member \"" + std::string(name) + "\"");
  return *found;
}

std::size_t JsonIn::size() const {
  if (isObject()) return value_->MemberCount();
  return isArray() ? value_->Size() : 0;
}

}  // namespace Kiln
