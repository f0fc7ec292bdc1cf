#include "host/import/Fields.h"

namespace Host::Import {

std::vector<JsonIn> objects(JsonIn at) {
  std::vector<JsonIn> elements;
  elements.reserve(at.size());
  at.eachElement([&](JsonIn const& element) {
    if (!element.isObject()) element.fail("expected an object");
    if (element.size() != 0) elements.push_back(element);
  });
  return elements;
}

std::optional<std::string> text(JsonIn at, std::string_view key) {
  auto const member = at.find(key);
  return member ? std::optional(std::string(member->text())) : std::nullopt;
}

std::optional<std::string> word(JsonIn at, std::string_view key) {
  auto const member = at.find(key);
  if (!member) return std::nullopt;
  if (member->isText()) return std::string(member->text());
  return member->value().IsUint() ? std::optional(std::to_string(member->value().GetUint())) : std::nullopt;
}

std::uint32_t numberIn(JsonIn at, std::uint32_t min, std::uint32_t max) {
  return static_cast<std::uint32_t>(at.unsignedNumber(min, max));
}

std::optional<std::uint32_t> number(JsonIn at, std::string_view key) {
  auto const member = at.find(key);
  return member ? std::optional(number(*member)) : std::nullopt;
}

bool hasFlag(JsonIn at, std::string_view key, std::string_view word) {
  bool found = false;
  if (auto const member = at.find(key)) {
    member->eachElement([&](JsonIn const& element) { found = found || (element.isText() && element.text() == word); });
  }
  return found;
}

}  // namespace Host::Import
