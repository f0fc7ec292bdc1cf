#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/kiln/Describe.h"
#include "platform/meshal/Bounded.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/vane/VtepGroup.h"

/// Keys of tables that one feature uses alone. Aggregates that compare, hash and print.

namespace TesselVxlan {

/// The address of an IPv4 termination entry; its text is the address.
struct L2TunnelIpv4Key {
  Meshal::IpAddr addr;
  friend bool operator==(L2TunnelIpv4Key const&, L2TunnelIpv4Key const&) = default;
};
inline std::size_t hash_value(L2TunnelIpv4Key const& key) { return hash_value(key.addr); }
inline void appendText(std::string& out, L2TunnelIpv4Key const& key) { appendText(out, key.addr); }

/// The same for IPv6.
struct L2TunnelIpv6Key {
  Meshal::IpGenAddr addr;
  friend bool operator==(L2TunnelIpv6Key const&, L2TunnelIpv6Key const&) = default;
};
inline std::size_t hash_value(L2TunnelIpv6Key const& key) { return hash_value(key.addr); }
inline void appendText(std::string& out, L2TunnelIpv6Key const& key) { appendText(out, key.addr); }

/// A VNI; its text is the number.
struct L2TunnelVnIdKey {
  U24 vni;
  friend bool operator==(L2TunnelVnIdKey const&, L2TunnelVnIdKey const&) = default;
};
inline std::size_t hash_value(L2TunnelVnIdKey const& key) { return hash_value(key.vni); }
inline void appendText(std::string& out, L2TunnelVnIdKey const& key) { appendText(out, key.vni); }

/// A VLAN, where the chip finds the VNI by it; its text is the number.
struct EgrVfiIndexHash {
  std::uint16_t vlanId = 0;
  friend bool operator==(EgrVfiIndexHash const&, EgrVfiIndexHash const&) = default;
};
inline std::size_t hash_value(EgrVfiIndexHash const& key) { return Kiln::mix(key.vlanId); }
inline void appendText(std::string& out, EgrVfiIndexHash const& key) { Kiln::writeText(out, key.vlanId); }

struct EgrAdaptSinglePortGroupKey {
  bool valid = false;
  std::uint16_t portGroup = 0;  ///< 9 bits.
  std::uint16_t vfi = 0;
};
BOOST_DESCRIBE_STRUCT(EgrAdaptSinglePortGroupKey, (), (valid, portGroup, vfi))
KILN_VALUE_OPS(EgrAdaptSinglePortGroupKey)

struct VxlanV4UnderlayMcastKey {
  Meshal::IpAddr source;
  Meshal::IpAddr group;
  std::uint16_t vlan = 0;
};
BOOST_DESCRIBE_STRUCT(VxlanV4UnderlayMcastKey, (), (source, group, vlan))
KILN_VALUE_OPS(VxlanV4UnderlayMcastKey)

struct FlexQosEgrEcn6Key {
  std::uint8_t keySelect = 0;
  std::uint8_t remarkBasePtr = 0;
  std::uint8_t intCnSelect = 0;
  std::uint8_t intCn = 0;
  std::uint8_t ecnFlag = 0;
};
BOOST_DESCRIBE_STRUCT(FlexQosEgrEcn6Key, (), (keySelect, remarkBasePtr, intCnSelect, intCn, ecnFlag))
KILN_VALUE_OPS(FlexQosEgrEcn6Key)

/// A group of remote VTEPs; its text is the number.
struct VpLagKey {
  Vxlan::SwTunnelGroupId swTunnelGroupId;
  friend bool operator==(VpLagKey const&, VpLagKey const&) = default;
};
inline std::size_t hash_value(VpLagKey const& key) { return hash_value(key.swTunnelGroupId); }
inline void appendText(std::string& out, VpLagKey const& key) { appendText(out, key.swTunnelGroupId); }

/// An underlay next hop of packets that are replicated. Not the key of the underlay's own table.
struct L3NextHop2Key {
  Meshal::EthAddr macAddr;
  Meshal::IntfId intfId;
  std::uint8_t herEntry = 1;
};
BOOST_DESCRIBE_STRUCT(L3NextHop2Key, (), (macAddr, intfId, herEntry))
KILN_VALUE_OPS(L3NextHop2Key)

}  // namespace TesselVxlan

namespace TesselL3Common {

/// The next hop of packets that are replicated to a remote VTEP.
struct L3NextHop1Key {
  Meshal::IpGenAddr vtep;
  std::uint8_t herEntry = 1;
};
BOOST_DESCRIBE_STRUCT(L3NextHop1Key, (), (vtep, herEntry))
KILN_VALUE_OPS(L3NextHop1Key)

}  // namespace TesselL3Common

namespace TesselCentral {

/// The two congestion marks of a packet whose tunnel ends here; profile 0 is that of packets without a tunnel.
struct FlexQosIngEcnKey {
  std::uint8_t tunnelProfile = 0;
  std::uint8_t innerEcn = 0;
  std::uint8_t outerEcn = 0;
  std::uint8_t ecnFlag = 0;
};
BOOST_DESCRIBE_STRUCT(FlexQosIngEcnKey, (), (tunnelProfile, innerEcn, outerEcn, ecnFlag))
KILN_VALUE_OPS(FlexQosIngEcnKey)

}  // namespace TesselCentral

namespace TesselEpre {

/// A port and the remote VTEP behind it: "(up1 , 10.0.0.2)".
struct EpreRemapKey {
  Meshal::IntfId port;
  Meshal::IpGenAddr vtep;
  friend bool operator==(EpreRemapKey const&, EpreRemapKey const&) = default;
};
inline std::size_t hash_value(EpreRemapKey const& key) { return Kiln::mix(hash_value(key.port), hash_value(key.vtep)); }
inline void appendText(std::string& out, EpreRemapKey const& key) {
  out += '(';
  appendText(out, key.port);
  out += " , ";
  appendText(out, key.vtep);
  out += ')';
}
KILN_VALUE_STREAM(EpreRemapKey)

}  // namespace TesselEpre
