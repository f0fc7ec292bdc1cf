#pragma once

#include <string_view>

#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host {

/// Why `address` is not the address of one host in a network: "unspecified", "loopback", "multicast" or "broadcast".
/// Empty for a unicast address.
std::string_view whyNotUnicast(Meshal::IpGenAddr const& address);
/// The same for an Ethernet address: "zero", "multicast" or "broadcast".
std::string_view whyNotUnicast(Meshal::EthAddr const& address);

}  // namespace Host
