#pragma once

#include <string>

#include "host/import/Fields.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host::Import {

using Meshal::EthAddr;
using Meshal::IpGenAddr;

inline unsigned bitsOf(IpGenAddr const& address) { return address.isIpv6() ? 128 : 32; }
/// The address with all but the first `length` bits cleared. REQUIRES: `length <= bitsOf(address)`.
IpGenAddr network(IpGenAddr const& address, unsigned length);

struct Prefix {
  IpGenAddr network;  ///< Without host bits.
  unsigned length = 0;
};

/// Each throws InputError with the value's place where it is no such text.
IpGenAddr ipAddr(JsonIn at);
/// "10.1.1.0/31", or an address alone for one host.
Prefix prefix(JsonIn at);
EthAddr ethAddr(JsonIn at);
/// An address that packets can be sent to. Throws InputError also for the unspecified address, a loopback, multicast or
/// broadcast address; `what` names the use in the error.
IpGenAddr unicastIpAddr(JsonIn at, std::string const& what);
/// The same for an Ethernet address, where zero is no address.
EthAddr unicastEthAddr(JsonIn at, std::string const& what);

}  // namespace Host::Import
