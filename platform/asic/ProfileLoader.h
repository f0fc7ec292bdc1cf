#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/asic/ChipProfile.h"

namespace Asic {

/// A profile that can't be used: `what()` is "file: place: value: what is wrong", for people.
class ProfileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A profile by the name of one that is built in, or from a file. Throws `ProfileError`.
///
///   {"name": "…", "description": "…", "supportsVxlan": true, "testChip": false,
///    "tables": {"EgrL3Ipv4TunnelTable": {"rows": 8192}, "VirtualPort1Table": {"rows": 8192, "base": 65536}},
///    "features": {"TesselVxlan::TesselChipAttributesVxlan": {"vpClassCode": 3}}}
///
/// Refuses what doesn't read, unknown members and tables, numbers out of range, and a chip that has neither cascaded
/// forwarding nor the HER next-hop tables. A feature that isn't named is there with its defaults.
Dovel::Ptr<ChipProfile const> loadProfile(std::string const& nameOrFile);
/// The same from a text; `file` names it in messages.
Dovel::Ptr<ChipProfile const> parseProfile(std::string_view json, std::string const& file);
/// The profiles that are built in, by name.
std::vector<std::string_view> profileNames();

}  // namespace Asic
