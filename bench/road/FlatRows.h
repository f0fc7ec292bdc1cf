#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <vector>

#include "platform/kiln/Hash.h"

namespace RoadBench {

template <class Key, class Value>
using FlatMap = boost::unordered_flat_map<Key, Value, Kiln::Hash<Key>>;

/// Rows by number, found by key. The number that was released last is the next.
template <class Key, class Row>
struct FlatRows {
  FlatMap<Key, std::uint32_t> numbers;
  std::vector<Row> rows;
  std::vector<std::uint32_t> free;

  std::uint32_t add(Key const& key, Row const& row) {
    auto number = static_cast<std::uint32_t>(rows.size());
    if (free.empty()) {
      rows.push_back(row);
    } else {
      number = free.back();
      free.pop_back();
      rows[number] = row;
    }
    numbers.emplace(key, number);
    return number;
  }
  void del(Key const& key) {
    auto const found = numbers.find(key);
    rows[found->second] = {};
    free.push_back(found->second);
    numbers.erase(found);
  }
  Row& at(Key const& key) { return rows[numbers.find(key)->second]; }
};

}  // namespace RoadBench
