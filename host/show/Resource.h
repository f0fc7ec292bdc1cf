#pragma once

#include <iosfwd>
#include <string_view>
#include <vector>

#include "platform/asic/Chip.h"
#include "platform/kiln/JsonOut.h"
#include "platform/kiln/Log.h"

namespace Host {

/// How full a table is.
struct Resource {
  std::string_view table;
  std::uint32_t rows = 0;
  std::uint32_t used = 0;
  std::uint32_t free = 0;
  std::size_t waiting = 0;  ///< Entries that wait for a row, or for the chip to accept it.
  std::uint32_t most = 0;   ///< The most rows that were used at any moment.
  std::uint64_t refused = 0;
  unsigned percent = 0;  ///< Used rows, rounded down, but 1 where there is one.
};
/// By the tables' names.
std::vector<Resource> resourcesOf(Asic::Chip const& chip);
void printResources(std::ostream& out, Asic::Chip const& chip);
/// As member "resource", an array. REQUIRES: inside an object.
void writeResources(Kiln::JsonWriter& json, Asic::Chip const& chip);

/// Prints operator messages, one line for each name: the only message, or the first and how many there are.
void printLogTotals(std::ostream& out, Kiln::LogCapture const& logs);

}  // namespace Host
