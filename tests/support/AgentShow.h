#pragma once

#include <string>
#include <string_view>

#include "platform/asic/SimulatedChip.h"

namespace AgentTest {

/// The tables of a chip as a person reads them: a heading per table that has entries, by name, and a line per entry, by
/// key: "10.255.0.2: vpHandle=VirtualPortTableMerged[10.255.0.2] ecmp=1".
///
/// Targets of handles are named by table and key, so that texts of two agents compare whatever rows they use; fields
/// that are 0 and the counts of updates are left out. An entry whose key was removed while others use it stands in
/// parentheses; one that isn't written tells its state. Each number is compared with what the chip itself has in the
/// row: where it differs, both are told, and rows that no entry accounts for are told as well.
std::string chipText(Asic::Chip const& chip, Asic::SimulatedChip const& hardware);

/// The lines of one table of such a text, without its heading; empty if it has no entries.
std::string tableOf(std::string const& chipText, std::string_view table);

}  // namespace AgentTest
