#pragma once

#include "platform/dovel/Factory.h"
#include "platform/dovel/Node.h"
#include "platform/kiln/Attribute.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/features/EgrL3TunnelTableAttributes.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/tessel/tables/EgrL3Ipv4TunnelTable.h"
#include "platform/tessel/tables/EgrL3Ipv6TunnelTable.h"
#include "platform/tessel/values/VxlanTunnelKey.h"
#include "platform/vxlan/VxlanConfig.h"

namespace TesselVxlan {

/// Keeps the outer headers of all tunnels: one row for each pair of ends, shared by the tunnels between them.
///
/// Reads its arguments, the trust map's base, DSCP propagation, and what the chip keys and selects by. Only writer of
/// `EgrL3Ipv4TunnelTable` and `EgrL3Ipv6TunnelTable`. Settings are read when a header is written; a change of one takes
/// effect when the headers are written again. A chip may key IPv4 headers by source alone and IPv6 ones by half of the
/// destination: such headers are shared by more tunnels, invisibly to the callers.
/// States: before `initTables` there are no tables, and no other operation may be called; they do not change after it.
/// Main thread only.
/// A header exists while a handle of it is held. Row 0 of the IPv4 table is the default header, owned by no tunnel.
class TesselVxlanEgrL3TunnelTablesProgrammer final : public Dovel::Node {
  KILN_BASE_TYPE(TesselVxlan::TesselVxlanEgrL3TunnelTablesProgrammer)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)
  KILN_FIXED(0x104, Dovel::Ptr<TesselCommon::Qos::TrustStatus const>, qosTrustStatus)
  KILN_FIXED(0x105, Dovel::Ptr<Vxlan::VxlanConfigDir const>, vxlanConfigDir)
  KILN_ATTR(0x106, Dovel::Ptr<TesselVxlan::EgrL3Ipv4TunnelTable>, egrL3Ipv4TunnelTable)
  KILN_ATTR(0x107, Dovel::Ptr<TesselVxlan::EgrL3Ipv6TunnelTable>, egrL3Ipv6TunnelTable)
  KILN_ATTR(0x108, Dovel::Ptr<EgrL3TunnelTableAttributes const>, egrL3TunnelTableAttributes)

 public:
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;

  TesselVxlanEgrL3TunnelTablesProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                         Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                         Dovel::Ptr<TesselCommon::Qos::TrustStatus const> qosTrustStatus,
                                         Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir);

  /// Creates and empties both tables and writes the default header. REQUIRES: once; `fcsd` knows its logical chips.
  void initTables(TesselCentral::ChipInfo const& chipInfo);

  /// A reference to the header from `tunnelKey` to `dip`, written with the present settings. Never null; a header that
  /// found its table full has a handle too. The destination alone decides on the family: IPv6, else IPv4. Throws the
  /// range exception of `U7` for a trust map base beyond it; nothing is written then. REQUIRES: the source has a
  /// family.
  Handle insertEntry(TesselL3Common::VxlanTunnelKey const& tunnelKey, Meshal::IpGenAddr const& dip);
  Handle insertIpv4Entry(TesselL3Common::VxlanTunnelKey const& tunnelKey, Meshal::IpGenAddr const& dip);
  /// An IPv6 header has no fixed UDP source port, whatever `tunnelKey` says.
  Handle insertIpv6Entry(TesselL3Common::VxlanTunnelKey const& tunnelKey, Meshal::IpGenAddr const& dip);

  /// The header that `insertEntry` with these ends made, as a weak handle; null if there is none. A destination without
  /// family means the zero address of the IPv4 table; with a source without family too, the default header.
  Handle entryWeakRef(Meshal::IpGenAddr const& srcIpAddr, Meshal::IpGenAddr const& dstIpAddr) const;

 private:
  void programDefaultTunnelEntry();
  TesselL3Common::EgrL3TunnelKey ipv4Key(Meshal::IpGenAddr const& sip, Meshal::IpGenAddr const& dip) const;
  TesselL3Common::EgrL3Ipv6TunnelKey ipv6Key(Meshal::IpGenAddr const& sip, Meshal::IpGenAddr const& dip) const;
  /// Completes `entry` by what both families have, and writes it.
  template <class Table>
  Handle headerRef(Dovel::Ptr<Table> const& table, typename Table::Key const& key, typename Table::Entry& entry,
                   TesselL3Common::VxlanTunnelKey const& tunnelKey, Meshal::IpGenAddr const& dip, char const* caller);
};

inline constexpr Dovel::Factory<TesselVxlanEgrL3TunnelTablesProgrammer> tesselVxlanEgrL3TunnelTablesProgrammerFactory;

}  // namespace TesselVxlan
