#include "host/scenario/Expectation.h"

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <boost/algorithm/string.hpp>

namespace Host {

namespace {

using Kiln::JsonIn;

std::string jsonOf(rapidjson::Value const& value) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  value.Accept(writer);
  return {text.GetString(), text.GetSize()};
}

/// A text as it is, anything else as JSON: what a selector names.
std::string plainText(JsonIn const& in) { return in.isText() ? std::string(in.text()) : jsonOf(in.value()); }

bool isIndex(std::string const& name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool selects(std::string const& selector, JsonIn const& element) {
  std::vector<std::string> conditions;
  boost::split(conditions, selector, [](char c) { return c == '&'; });
  return std::all_of(conditions.begin(), conditions.end(), [&](std::string const& condition) {
    auto const equals = condition.find('=');
    if (equals == std::string::npos || !element.isObject()) return false;
    auto const member = element.find(condition.substr(0, equals));
    return member && plainText(*member) == condition.substr(equals + 1);
  });
}

void select(JsonIn const& at, std::vector<std::string> const& names, std::size_t depth, std::vector<JsonIn>& found) {
  if (depth == names.size()) return found.push_back(at);
  auto const& name = names[depth];
  if (at.isObject()) {
    if (auto const member = at.find(name)) select(*member, names, depth + 1, found);
  } else if (at.isArray()) {
    bool const ofEach = name.find('=') == std::string::npos && !isIndex(name);
    std::size_t index = 0;
    at.eachElement([&](JsonIn const& element) {
      if (ofEach) {
        select(element, names, depth, found);
      } else if (fmt::format("{}", index) == name || selects(name, element)) {
        select(element, names, depth + 1, found);
      }
      ++index;
    });
  }
}

/// Equal, or an object with all members that `wanted` has.
bool holds(rapidjson::Value const& wanted, rapidjson::Value const& found) {
  if (!wanted.IsObject() || !found.IsObject()) return wanted == found;
  return std::all_of(wanted.MemberBegin(), wanted.MemberEnd(), [&](auto const& member) {
    auto const of = found.FindMember(member.name);
    return of != found.MemberEnd() && holds(member.value, of->value);
  });
}

rapidjson::Document copyOf(rapidjson::Value const& value) {
  rapidjson::Document copy;
  copy.CopyFrom(value, copy.GetAllocator());
  return copy;
}

}  // namespace

Expectation::Expectation(std::string path, JsonIn const& wanted)
    : path_(std::move(path)), wanted_(copyOf(wanted.value()), wanted.source()) {
  boost::split(names_, boost::trim_left_copy_if(path_, [](char c) { return c == '/'; }),
               [](char c) { return c == '/'; });
  for (auto& name : names_) {
    if (name.empty()) wanted.fail("expected a path such as /tunnels/vtep=10.0.0.2/programmed as the member's name");
    boost::replace_all(name, "~1", "/");
    boost::replace_all(name, "~0", "~");
  }
}

std::string Expectation::wanted() const { return jsonOf(wanted_.json()); }

std::optional<std::string> Expectation::violation(JsonIn const& report) const {
  auto names = names_;
  bool const count = names.back() == "#";
  if (count) names.pop_back();
  std::vector<JsonIn> found;
  select(report, names, 0, found);
  auto const& wanted = wanted_.json();
  if (found.empty()) return wanted.IsNull() ? std::nullopt : std::optional<std::string>("nothing");
  for (auto const& in : found) {
    if (count) {
      rapidjson::Value const size(static_cast<std::uint64_t>(in.size()));
      if (size != wanted) return jsonOf(size);
    } else if (!holds(wanted, in.value())) {
      return jsonOf(in.value());
    }
  }
  return std::nullopt;
}

}  // namespace Host
