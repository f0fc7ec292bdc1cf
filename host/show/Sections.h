#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "platform/asic/Chip.h"
#include "platform/document/Document.h"
#include "platform/kiln/Entity.h"
#include "platform/kiln/FunctionRef.h"

namespace Host {

/// The stores of a chip by name.
std::vector<Asic::StoreBase const*> sortedStores(Asic::Chip const& chip);
/// The chip's own tables by name.
std::vector<Asic::ChipTableReport> sortedChipTables(Asic::Chip const& chip);

inline constexpr std::array<std::string_view, 3> kStores{"stateway", "local", "shmem"};
/// Calls `visit(path, entity)` for each entity of a store, in the order of the paths. REQUIRES: `store` is in
/// `kStores`.
void forEachEntity(Stateway::AgentStores const& stores, std::string_view store,
                   Kiln::FunctionRef<void(std::string const&, Kiln::Entity const&)> visit);

}  // namespace Host
