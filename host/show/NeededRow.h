#pragma once

#include <string>
#include <string_view>

#include "platform/asic/Chip.h"
#include "platform/asic/EntryHandle.h"
#include "platform/asic/Store.h"

namespace Host {

/// A row that something needs, at the top of the rows that it leads to.
struct NeededRow {
  std::string_view table{};           ///< Without namespace.
  Asic::EntryHandle::PtrConst row{};  ///< Weak. Null if the table has no such row, or the chip no such table.
  bool sends = false;                 ///< Whether it has to lead to a next hop that sends packets.
};

/// The row of `key` in one store of a table. REQUIRES: it is a store of that table.
template <class Table>
NeededRow rowIn(Asic::StoreBase const& store, typename Table::Key const& key, bool sends = false) {
  NeededRow needed{.table = store.name(), .sends = sends};
  if (auto const* const record = static_cast<typename Table::Store const&>(store).find(key)) {
    needed.row = Asic::EntryHandle::PtrConst(&record->weak());
  }
  return needed;
}

/// The same in the chip's store of that table, if it has one.
template <class Table>
NeededRow rowOf(Asic::Chip const& chip, typename Table::Key const& key, bool sends = false) {
  auto const table = Asic::shortName(Table::kilnType().name());
  auto const* const store = chip.store(table);
  return store ? rowIn<Table>(*store, key, sends) : NeededRow{.table = table, .sends = sends};
}

/// "no row in TABLE", or that the chip has no such table.
std::string absenceOf(Asic::Chip const& chip, std::string_view table);
/// Why the chip does not have a row: "table full: TABLE", "write failed: TABLE" or "write in progress: TABLE".
/// REQUIRES: it does not have it.
std::string refusalOf(Asic::EntryHandle const& row);

}  // namespace Host
