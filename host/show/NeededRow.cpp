#include "host/show/NeededRow.h"

namespace Host {

std::string absenceOf(Asic::Chip const& chip, std::string_view table) {
  return std::string(chip.store(table) ? "no row in " : "no such table on this chip: ").append(table);
}

std::string refusalOf(Asic::EntryHandle const& row) {
  auto const table = std::string(row.tableName());
  switch (row.state()) {
    case Asic::EntryState::full:
      return "table full: " + table;
    case Asic::EntryState::inProgress:
      return "write in progress: " + table;
    default:
      return "write failed: " + table;
  }
}

}  // namespace Host
