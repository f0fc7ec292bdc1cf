#pragma once

#include <iosfwd>
#include <set>
#include <string>
#include <string_view>

#include "host/show/NeededRow.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

/// What the rows that the field of a row refers to are for: "virtual port", "next hop"; the field's own name for
/// others.
std::string_view wordOf(std::string_view field);
/// A row's key; "default row" for one whose key has no value.
std::string rowName(Asic::EntryHandle const& row);

/// Prints rows with all that they lead to; of a row that was printed before, its first line alone.
class RowPrinter {
 public:
  explicit RowPrinter(std::ostream& out) : out_(out) {}

  void print(std::size_t depth, std::string_view word, Asic::EntryHandle const& row);
  /// The same, or that there is none.
  void print(std::size_t depth, std::string_view word, NeededRow const& needed);

 private:
  std::ostream& out_;
  std::set<Asic::RecordBase const*> printed_;
};

/// Writes a row as an object with table, key, row, state, and the rows that it leads to as "links" by field; null for
/// none.
void writeChain(Kiln::JsonWriter& json, Asic::EntryHandle::PtrConst const& row);

}  // namespace Host
