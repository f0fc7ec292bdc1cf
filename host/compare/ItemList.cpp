#include "host/compare/ItemList.h"

#include <algorithm>

namespace Host {

namespace {

std::vector<std::string_view> sortedLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    auto const end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Change::Attribute attributeOf(std::string_view line, bool from) {
  auto const at = line.find('=');
  Change::Attribute attribute{std::string(line.substr(0, at))};
  (from ? attribute.from : attribute.to) = std::string(line.substr(at + 1));
  return attribute;
}

/// Joins two attributes that are one with another value: the only ones of their name.
void joinChanged(std::vector<Change::Attribute>& attributes) {
  std::stable_sort(attributes.begin(), attributes.end(), [](auto const& a, auto const& b) { return a.name < b.name; });
  for (std::size_t i = 0; i + 1 < attributes.size(); ++i) {
    auto& [name, from, to] = attributes[i];
    auto const isIts = [&its = attributes[i].name](auto const& other) { return other.name == its; };
    if (std::count_if(attributes.begin(), attributes.end(), isIts) != 2 || attributes[i + 1].name != name) continue;
    if (!from || !attributes[i + 1].to) continue;
    to = std::move(attributes[i + 1].to);
    attributes.erase(attributes.begin() + static_cast<std::ptrdiff_t>(i) + 1);
  }
}

std::vector<Change::Attribute> differing(std::string_view from, std::string_view to) {
  auto const before = sortedLines(from);
  auto const after = sortedLines(to);
  std::vector<std::string_view> left, right;
  std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(left));
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(right));
  std::vector<Change::Attribute> attributes;
  for (auto const line : left) attributes.push_back(attributeOf(line, true));
  for (auto const line : right) attributes.push_back(attributeOf(line, false));
  joinChanged(attributes);
  return attributes;
}

}  // namespace

void ItemList::add(std::string_view kind, std::string_view key, std::string_view lines, std::string_view numbers) {
  auto const length = [](std::string_view text) { return static_cast<std::uint32_t>(text.size()); };
  items_.push_back({text_.size(), length(kind), length(key), length(lines), length(numbers)});
  text_.append(kind).append(key).append(lines).append(numbers);
}

void ItemList::sort() {
  auto const less = [this](Item const& a, Item const& b) { return name(a) < name(b); };
  if (!std::is_sorted(items_.begin(), items_.end(), less)) std::stable_sort(items_.begin(), items_.end(), less);
}

Change ItemList::change(Item const& item, Change::How how) const {
  Change change{how, std::string(kind(item)), std::string(key(item))};
  for (auto const line : sortedLines(lines(item)))
    change.attributes.push_back(attributeOf(line, how == Change::How::removed));
  return change;
}

ItemList::Compared ItemList::compare(ItemList const& from, ItemList const& to) {
  Compared compared;
  auto a = from.items_.begin();
  auto b = to.items_.begin();
  while (a != from.items_.end() || b != to.items_.end()) {
    bool const onlyFrom = b == to.items_.end() || (a != from.items_.end() && from.name(*a) < to.name(*b));
    bool const onlyTo = !onlyFrom && (a == from.items_.end() || to.name(*b) < from.name(*a));
    if (onlyFrom) {
      compared.changes.push_back(from.change(*a++, Change::How::removed));
    } else if (onlyTo) {
      compared.changes.push_back(to.change(*b++, Change::How::added));
    } else {
      if (from.lines(*a) != to.lines(*b)) {
        auto attributes = differing(from.lines(*a), to.lines(*b));
        auto const [kind, key] = from.name(*a);
        if (!attributes.empty())
          compared.changes.push_back(
              {Change::How::changed, std::string(kind), std::string(key), std::move(attributes)});
      } else if (from.numbers(*a) != to.numbers(*b)) {
        ++compared.numbersApart;
      }
      ++a;
      ++b;
    }
  }
  sortByValue(compared.changes);
  return compared;
}

}  // namespace Host
