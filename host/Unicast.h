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
/// Why `address` is not a group that packets can be routed to: "no group", or "reserved" for those that no router
/// forwards. Empty for such a group.
std::string_view whyNotGroup(Meshal::IpGenAddr const& address);

}  // namespace Host
