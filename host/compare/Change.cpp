#include "host/compare/Change.h"

#include <algorithm>
#include <ostream>

#include "platform/kiln/Text.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host {

namespace {

constexpr std::string_view kBetween = " /,()[]>";

std::string_view takeWord(std::string_view& text) {
  auto const end = std::min(text.find_first_of(kBetween, 1), text.size());
  auto const word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

std::string_view withoutSeparator(std::string_view word) {
  return !word.empty() && kBetween.find(word.front()) != kBetween.npos ? word.substr(1) : word;
}

std::strong_ordering compareWords(std::string_view a, std::string_view b) {
  a = withoutSeparator(a);
  b = withoutSeparator(b);
  std::uint64_t left = 0, right = 0;
  if (Kiln::readText(a, left) && Kiln::readText(b, right)) return left <=> right;
  Meshal::IpGenAddr leftAddress, rightAddress;
  if (Kiln::readText(a, leftAddress) && Kiln::readText(b, rightAddress)) return leftAddress <=> rightAddress;
  return a <=> b;
}

std::string_view howText(Change::How how) {
  switch (how) {
    case Change::How::added:
      return "added";
    case Change::How::removed:
      return "removed";
    case Change::How::changed:
      break;
  }
  return "changed";
}

void printAttribute(std::ostream& out, Change::Attribute const& attribute) {
  auto const& [name, from, to] = attribute;
  out << name;
  if (from && to) {
    out << (name.empty() ? "" : " ") << *from << " -> " << *to;
  } else {
    out << (name.empty() ? "" : "=") << (from ? *from : *to);
  }
}

void printChange(std::ostream& out, Change const& change) {
  constexpr std::string_view marks = "+-~";
  out << marks[static_cast<std::size_t>(change.how)] << ' ' << change.kind << ' ' << change.key;
  std::string_view before = ": ";
  for (auto const& attribute : change.attributes) {
    out << before;
    // Of what both have, attributes may be in one alone.
    if (change.how == Change::How::changed && !(attribute.from && attribute.to)) out << (attribute.from ? '-' : '+');
    printAttribute(out, attribute);
    before = ", ";
  }
  out << '\n';
}

}  // namespace

bool valueLess(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    auto const order = compareWords(takeWord(a), takeWord(b));
    if (order != std::strong_ordering::equal) return order == std::strong_ordering::less;
  }
  return a.empty() && !b.empty();
}

void sortByValue(std::vector<Change>& changes) {
  std::stable_sort(changes.begin(), changes.end(), [](Change const& a, Change const& b) {
    return a.kind != b.kind ? a.kind < b.kind : valueLess(a.key, b.key);
  });
}

void printChanges(std::ostream& out, std::vector<Change> const& changes) {
  for (auto const& change : changes) printChange(out, change);
}

void writeChanges(Kiln::JsonWriter& json, std::vector<Change> const& changes) {
  json.array();
  for (auto const& change : changes) {
    json.object();
    json.key("change").text(howText(change.how));
    json.key("kind").text(std::string_view(change.kind));
    json.key("key").text(std::string_view(change.key));
    json.key("attributes").array();
    for (auto const& attribute : change.attributes) {
      json.object();
      json.key("name").text(std::string_view(attribute.name));
      json.key("from").text(attribute.from);
      json.key("to").text(attribute.to);
      json.objectEnd();
    }
    json.arrayEnd();
    json.objectEnd();
  }
  json.arrayEnd();
}

}  // namespace Host
