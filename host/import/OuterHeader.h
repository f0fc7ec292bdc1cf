#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "host/import/Links.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// What VXLAN devices say about the headers that they write, beyond addresses and port.
struct OuterHeader {
  std::optional<std::uint32_t> ttl;  ///< Nothing: the kernel's default.
  bool dscpOfInner = false;          ///< The DSCP is copied from the inner header.
  /// First UDP source port and how many there are; nothing: the kernel's range.
  std::optional<std::pair<std::uint32_t, std::uint32_t>> sourcePorts;
};

/// The switch has one outer header: that of the first device. A warning names each setting that the switch has no place
/// for, and each in which a further device differs. Throws InputError where a value is of a wrong type.
OuterHeader outerHeader(std::vector<Device const*> const& devices, Warnings& warnings);

}  // namespace Host::Import
