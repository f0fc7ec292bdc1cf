#pragma once

#include <cstdint>
#include <set>

#include "platform/bridging/VlanId.h"
#include "platform/dovel/Factory.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/values/L3Keys.h"

namespace TesselL3Common {

/// Configuration that the VXLAN state machines share: the VLAN mapping.
class TesselVxlanConfig final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::TesselVxlanConfig, Kiln::NamedEntity)
  KILN_ATTR(0x102, Dovel::Ptr<TesselCentral::VlanMappingDir>, vlanMappingDir)

 public:
  using NamedEntity::NamedEntity;
};

/// Status that the VXLAN state machines share: the layer 3 status.
class TesselVxlanStatus final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::TesselVxlanStatus, Kiln::NamedEntity)
  KILN_ATTR(0x102, Dovel::Ptr<TesselCentral::VxlanL3StatusEntryDir>, vxlanL3StatusEntryDir)

 public:
  using NamedEntity::NamedEntity;
};

/// The remote VTEP of each virtual port number, for readers that find the number in a packet.
class VxlanDvpToVtepMap final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::VxlanDvpToVtepMap, Kiln::NamedEntity)
  KILN_ID_COLL(0x102, std::uint32_t, Meshal::IpGenAddr, dvpToVtepMap)

 public:
  using NamedEntity::NamedEntity;
};

/// A remote VTEP that uses each outer header, by the header's number. Entries are replaced; only a start of the feature
/// removes them.
class VxlanTunnelIndexToVtepMap final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::VxlanTunnelIndexToVtepMap, Kiln::NamedEntity)
  KILN_ID_COLL(0x102, std::uint32_t, Meshal::IpGenAddr, tunnelIndexToVtepMap)

 public:
  using NamedEntity::NamedEntity;
};

/// The next hop of a flood VTEP behind one port.
class TesselVxlanVtepNextHop final : public Kiln::Entity {
  KILN_TYPE(TesselL3Common::TesselVxlanVtepNextHop, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IntfId, port)
  KILN_ATTR(0x103, Meshal::IpGenAddr, addr)
  KILN_ATTR(0x104, Meshal::EthAddr, ethAddr)
  KILN_ATTR(0x105, Meshal::IntfId, l3Intf)

 public:
  explicit TesselVxlanVtepNextHop(Meshal::IntfId const& port) : port_(port) {}
  Dovel::String name() const override { return Kiln::toText(port_); }
};

/// The next hops to one flood VTEP. `version` grows with each change of them.
class TesselVxlanBumVtepConfig final : public Kiln::Entity {
  KILN_TYPE(TesselL3Common::TesselVxlanBumVtepConfig, Kiln::Entity)
  KILN_FIXED(0x102, Meshal::IpGenAddr, vtepIp)
  KILN_ATTR(0x103, EncapId, encapId)
  KILN_ENTITY_COLL(0x104, Meshal::IntfId, TesselVxlanVtepNextHop, port, nextHops)
  KILN_ATTR(0x105, std::uint64_t, version)

 public:
  explicit TesselVxlanBumVtepConfig(Meshal::IpGenAddr const& vtepIp) : vtepIp_(vtepIp) {}
  Dovel::String name() const override { return Kiln::toText(vtepIp_); }

  /// Finds or creates the next hop behind `port` and assigns the addresses.
  Dovel::Ptr<TesselVxlanVtepNextHop> nextHopsIs(Meshal::IntfId const& port, Meshal::IpGenAddr const& addr,
                                                Meshal::EthAddr const& ethAddr);
};

/// The flood VTEPs.
class TesselVxlanBumVtepConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::TesselVxlanBumVtepConfigDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, Meshal::IpGenAddr, TesselVxlanBumVtepConfig, vtepIp, bumVtepConfig)

 public:
  using NamedEntity::NamedEntity;

  /// Finds the VTEP, or creates it with `encapId`.
  Dovel::Ptr<TesselVxlanBumVtepConfig> bumVtepConfigIs(Meshal::IpGenAddr const& vtepIp, EncapId encapId);
};

/// The flood VTEP that owns an encapsulation id.
class EncapIdToBumVtepIpConfig final : public Kiln::Entity {
  KILN_TYPE(TesselL3Common::EncapIdToBumVtepIpConfig, Kiln::Entity)
  KILN_FIXED(0x102, EncapId, encapId)
  KILN_ATTR(0x103, Meshal::IpGenAddr, vtepIp)

 public:
  explicit EncapIdToBumVtepIpConfig(EncapId const& encapId) : encapId_(encapId) {}
  Dovel::String name() const override { return Kiln::toText(encapId_); }
};

/// Flood VTEPs by encapsulation id.
class EncapIdToBumVtepIpConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::EncapIdToBumVtepIpConfigDir, Kiln::NamedEntity)
  KILN_ENTITY_COLL(0x102, EncapId, EncapIdToBumVtepIpConfig, encapId, vxlanReverseConfig)

 public:
  using NamedEntity::NamedEntity;
};

/// The flood VTEPs behind one underlay VLAN.
class FloodUnderlayVlanToVtepList {
 public:
  using Vteps = std::set<Meshal::IpGenAddr>;

  Vteps const& vtepIpList() const { return vtepIpList_; }
  /// False if the VTEP was in the list already.
  bool vtepIpListIs(Meshal::IpGenAddr const& vtep) { return vtepIpList_.insert(vtep).second; }
  /// False if it was not.
  bool vtepIpListDel(Meshal::IpGenAddr const& vtep) { return vtepIpList_.erase(vtep) != 0; }

  friend bool operator==(FloodUnderlayVlanToVtepList const&, FloodUnderlayVlanToVtepList const&) = default;

 private:
  Vteps vtepIpList_;
};
void appendText(std::string& out, FloodUnderlayVlanToVtepList const& list);
KILN_VALUE_STREAM(FloodUnderlayVlanToVtepList)

/// Flood VTEPs by underlay VLAN.
class FloodUnderlayVlanToVtepListDir final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Common::FloodUnderlayVlanToVtepListDir, Kiln::NamedEntity)
  KILN_COLL(0x102, Bridging::VlanId, FloodUnderlayVlanToVtepList, floodUnderlayVlanToVtepList)

 public:
  using NamedEntity::NamedEntity;

  /// Adds a VTEP to the list of a VLAN, which need not exist. Publishes as storing the longer list would, at a cost
  /// that does not depend on its length.
  void vtepIpListIs(Bridging::VlanId const& vlan, Meshal::IpGenAddr const& vtep);
  /// Removes it, and the list with its last VTEP.
  void vtepIpListDel(Bridging::VlanId const& vlan, Meshal::IpGenAddr const& vtep);
};

inline constexpr Dovel::Factory<TesselVxlanConfig> tesselVxlanConfigFactory;
inline constexpr Dovel::Factory<TesselVxlanStatus> tesselVxlanStatusFactory;

}  // namespace TesselL3Common

KILN_DECLARE_CODEC(TesselL3Common::FloodUnderlayVlanToVtepList);
