#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/asic/ChipProfile.h"

namespace Asic {

/// A profile by the name of one that is built in, or from a file. Throws
/// `Kiln::InputError`.
///
///   {"name": "…", "description": "…", "supportsVxlan": true, "testChip": false,
///    "tables": {"EgrL3Ipv4TunnelTable": {"rows": 8192}, "VirtualPort1Table": {"rows": 8192, "base": 65536}},
///    "features": {"TesselVxlan::TesselChipAttributesVxlan": {"vpClassCode": 3}}}
///
/// Refuses what is no JSON, unknown members and tables, numbers out of range, and a chip that has neither cascaded
/// forwarding nor the HER next-hop tables. A feature that isn't named has its defaults.
Dovel::Ptr<ChipProfile const> loadProfile(std::string const& nameOrFile);
/// The same from a text; `file` names it in errors.
Dovel::Ptr<ChipProfile const> parseProfile(std::string_view json, std::string const& file);
/// The names of the built-in profiles.
std::vector<std::string_view> profileNames();

}  // namespace Asic
