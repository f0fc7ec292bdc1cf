#pragma once

#include <rapidjson/document.h>

#include <vector>

#include "platform/asic/Chip.h"
#include "platform/stateway/Document.h"

namespace Host {

/// The stores of a chip by name.
std::vector<Asic::StoreBase const*> sortedStores(Asic::Chip const& chip);
/// The chip's own tables by name.
std::vector<Asic::ChipTableReport> sortedChipTables(Asic::Chip const& chip);
/// All attributes of all entities: {"stateway": {path: {attribute: value}}, "local": {…}, "shmem": {…}}.
rapidjson::Document stateDocument(Stateway::AgentStores const& stores);

}  // namespace Host
