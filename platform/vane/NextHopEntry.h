#pragma once

#include <cstdint>
#include <string>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"

namespace Vane {

/// The kind of a next hop. Other numbers are accepted and kept; the feature skips their entries.
enum NextHopEntryType : std::uint8_t {
  nextHopUnknown = 0,
  nextHopUnresolved = 1,
  nextHopResolved = 2,
  nextHopMcastTunnel_ = 12,
};
BOOST_DESCRIBE_ENUM(NextHopEntryType, nextHopUnknown, nextHopUnresolved, nextHopResolved, nextHopMcastTunnel_)
KILN_VALUE_STREAM(NextHopEntryType)
constexpr bool isOpenEnum(NextHopEntryType) { return true; }

/// The type of a next hop of a multicast tunnel.
constexpr NextHopEntryType nextHopMcastTunnel() { return nextHopMcastTunnel_; }

/// One next hop of a tunnel. The order is the one of the members.
///
/// `l2Intf` is empty when the next hop has a layer 3 interface alone. `encapValue` and `labelValue` are carried along.
struct NextHopEntry {
  KILN_FIELD(NextHopEntryType, type) = nextHopResolved;
  KILN_FIELD(Meshal::IpGenAddr, addr){};
  KILN_FIELD(Meshal::EthAddr, ethAddr){};
  KILN_FIELD(Meshal::IntfId, l2Intf){};
  KILN_FIELD(Meshal::IntfId, l3Intf){};
  KILN_FIELD(std::uint32_t, encapValue) = 0xFFFFFF;
  KILN_FIELD(std::uint32_t, labelValue) = 0x100000;

  std::string stringValue() const;

  friend bool operator==(NextHopEntry const&, NextHopEntry const&) = default;
  friend std::strong_ordering operator<=>(NextHopEntry const&, NextHopEntry const&) = default;
};
BOOST_DESCRIBE_STRUCT(NextHopEntry, (), (type_, addr_, ethAddr_, l2Intf_, l3Intf_, encapValue_, labelValue_))
KILN_VALUE_HASH(NextHopEntry)
KILN_VALUE_TEXT(NextHopEntry)

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::NextHopEntryType);
KILN_DECLARE_CODEC(Vane::NextHopEntry);
