#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/compare/Change.h"

namespace Host {

/// Things by kind and key, each with its attributes as lines "name=value", and apart from these the numbers that the
/// agent has chosen for it. All text is in one string: a state has some hundred thousand rows.
class ItemList {
 public:
  void add(std::string_view kind, std::string_view key, std::string_view lines, std::string_view numbers = {});
  /// To be called after the last `add`.
  void sort();

  std::size_t size() const { return items_.size(); }

  struct Compared {
    std::vector<Change> changes;
    std::size_t numbersApart = 0;  ///< Things with the same attributes and other numbers.
  };
  /// REQUIRES: both are sorted.
  static Compared compare(ItemList const& from, ItemList const& to);

 private:
  struct Item {
    std::size_t at;
    std::uint32_t kind, key, lines, numbers;  ///< Lengths.
  };
  std::string_view kind(Item const& item) const { return part(item.at, item.kind); }
  std::string_view key(Item const& item) const { return part(item.at + item.kind, item.key); }
  std::string_view lines(Item const& item) const { return part(item.at + item.kind + item.key, item.lines); }
  std::string_view numbers(Item const& item) const {
    return part(item.at + item.kind + item.key + item.lines, item.numbers);
  }
  std::string_view part(std::size_t at, std::size_t length) const { return std::string_view(text_).substr(at, length); }
  std::pair<std::string_view, std::string_view> name(Item const& item) const { return {kind(item), key(item)}; }
  Change change(Item const& item, Change::How how) const;

  std::string text_;
  std::vector<Item> items_;
};

}  // namespace Host
