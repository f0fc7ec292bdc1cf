#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/dovel/Node.h"
#include "platform/kiln/Attribute.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/tables/L2TunnelTermTables.h"
#include "platform/vxlan/VxlanConfig.h"

namespace TesselVxlan {

/// Who needs that packets from a remote VTEP are accepted: an active next hop of a unicast tunnel to it, or a flood
/// tunnel to a VTEP that is learnt from a routing protocol.
enum class SipHolder : std::uint8_t { nextHop, floodTunnel };

/// Owns the tunnel termination tables: local addresses (DIP) and remote VTEPs (SIP).
///
/// DIP tables hold the addresses at which tunnels end, SIP tables the remote VTEPs with the virtual port that their
/// packets get, one table of each kind for IPv4 and IPv6; the fifth holds the one set of ports that all DIP rows point
/// at: every port. Reads the outer-header PHB setting when a DIP row is written. Only writer of these tables.
/// States: a table is null until its `init` operation, and always if the chip doesn't have it; addresses of its family
/// then have no effect.
/// Main thread only.
/// Users of a DIP address are not counted: a second insert overwrites, one delete removes. A SIP row has two possible
/// holders and is removed with the last; it is a reference to its virtual port. The caller deletes a DIP row when the
/// last user of its address is removed.
class TesselVxlanTunnelTermTableProgrammer final : public Dovel::Node {
  KILN_BASE_TYPE(TesselVxlan::TesselVxlanTunnelTermTableProgrammer)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)
  KILN_FIXED(0x104, Dovel::Ptr<Vxlan::VxlanConfigDir const>, vxlanConfigDir)
  KILN_ATTR(0x105, Dovel::Ptr<TesselVxlan::L2TunnelIpv4DipTable>, l2TunnelIpv4DipTable)
  KILN_ATTR(0x106, Dovel::Ptr<TesselVxlan::L2TunnelIpv4SipTable>, l2TunnelIpv4SipTable)
  KILN_ATTR(0x107, Dovel::Ptr<TesselVxlan::L2TunnelIpv6DipTable>, l2TunnelIpv6DipTable)
  KILN_ATTR(0x108, Dovel::Ptr<TesselVxlan::L2TunnelIpv6SipTable>, l2TunnelIpv6SipTable)
  KILN_ATTR(0x109, Dovel::Ptr<TesselVxlan::AllowedPortBitmapProfile>, allowedPortBitmapProfile)

 public:
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;

  TesselVxlanTunnelTermTableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                       Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                       Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir);

  // Each creates its table, empty. REQUIRES: once, where the chip has the table; `fcsd` knows its logical chips.
  /// Also writes the set of all ports.
  void initAllowedPortsProfileTable(TesselCentral::ChipInfo const& chipInfo);
  void initDipTable(TesselCentral::ChipInfo const& chipInfo);
  void initSipTable(TesselCentral::ChipInfo const& chipInfo);
  void initDipV6Table(TesselCentral::ChipInfo const& chipInfo);
  void initSipV6Table(TesselCentral::ChipInfo const& chipInfo);

  // REQUIRES of all that follow: `addr` has a family.
  /// Tunnels to `addr` end here from now on, with the present PHB setting.
  void insertOrUpdateDipEntry(Meshal::IpGenAddr const& addr);
  /// REQUIRES: `dipEntryHas(addr)`, or the chip doesn't have the table.
  void deleteDipEntry(Meshal::IpGenAddr const& addr);
  /// Whether tunnels to `addr` end here; false for an address without family too.
  bool dipEntryHas(Meshal::IpGenAddr const& addr) const;

  /// Packets from `addr` get the virtual port behind `svpHandle` from now on, while `holder` needs it. A null handle,
  /// or one of a removed port, changes nothing.
  void insertSipEntry(Meshal::IpGenAddr const& addr, Handle const& svpHandle, SipHolder holder);
  /// `holder` needs the row no longer; it is removed with its last holder. No effect for an address without row.
  void deleteSipEntry(Meshal::IpGenAddr const& addr, SipHolder holder);

 private:
  template <class Table>
  Dovel::Ptr<Table> broughtUp(Dovel::Ptr<Table> const& table, TesselCentral::ChipInfo const& chipInfo) const;
  bool sipEntryHas(Meshal::IpGenAddr const& addr) const;
  /// Whether another holder than `holder`, which lets go of it, needs the row.
  bool sipEntryHeld(Meshal::IpGenAddr const& addr, SipHolder holder);

  /// The addresses whose row a flood tunnel holds, and whether a next hop holds it too. Most rows are next hops' alone
  /// and not in here.
  Kiln::HashMap<Meshal::IpGenAddr, bool> floodSips_;
};

inline constexpr Dovel::Factory<TesselVxlanTunnelTermTableProgrammer> tesselVxlanTunnelTermTableProgrammerFactory;

}  // namespace TesselVxlan
