#include "TesselVxlan/overlay/TesselVxlanEgrL3TunnelTablesProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/meshal/Bounded.h"
#include "platform/tessel/LogMessages.h"

KILN_TRACE_FILE("TesselVxlanEgrL3TunnelTablesProgrammer");

namespace TesselVxlan {

using Meshal::AddressFamily;
using Meshal::IpGenAddr;
using TesselL3Common::EgrL3Ipv6TunnelKey;
using TesselL3Common::EgrL3TunnelKey;
using TesselL3Common::VxlanTunnelKey;

namespace {

Kiln::LogHandle tunnelTableFull(TesselLog::TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL, 0, 1.0, 0, 0);

constexpr unsigned dscpCopied = 3;
constexpr unsigned dscpOfTrustMap = 1;

/// Keeps the table, not the programmer, which may be destroyed before the chip completes the write.
template <class Table>
struct HeaderResponse {
  Dovel::Ptr<Table const> table;
  typename Table::Key key;

  void operator()(Asic::EntryState state) const {
    TRACE_IN("operator()", 1, "entryState is :  {}", state);
    if (state == Asic::EntryState::full) Kiln::log(tunnelTableFull, key.sip());
  }
};

}  // namespace

TesselVxlanEgrL3TunnelTablesProgrammer::TesselVxlanEgrL3TunnelTablesProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<TesselCommon::Qos::TrustStatus const> qosTrustStatus,
    Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir)
    : statewayEm_(std::move(statewayEm)),
      fcsd_(std::move(fcsd)),
      qosTrustStatus_(std::move(qosTrustStatus)),
      vxlanConfigDir_(std::move(vxlanConfigDir)) {}

void TesselVxlanEgrL3TunnelTablesProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "Allocating EgrL3Tunnel tables");
  INVARIANT(fcsd()->logicalModInfos());
  egrL3Ipv4TunnelTableIs(egrL3Ipv4TunnelTableFactory());
  Asic::bringUp(*egrL3Ipv4TunnelTable(), statewayEm(), chipInfo);
  INVARIANT(egrL3Ipv4TunnelTable()->entrys() == 0);
  egrL3Ipv6TunnelTableIs(egrL3Ipv6TunnelTableFactory());
  Asic::bringUp(*egrL3Ipv6TunnelTable(), statewayEm(), chipInfo);
  INVARIANT(egrL3Ipv6TunnelTable()->entrys() == 0);
  egrL3TunnelTableAttributesIs(TesselProfile::feature<EgrL3TunnelTableAttributes>(chipInfo));
  INVARIANT(egrL3TunnelTableAttributes());
  programDefaultTunnelEntry();
}

TesselVxlanEgrL3TunnelTablesProgrammer::Handle TesselVxlanEgrL3TunnelTablesProgrammer::insertEntry(
    VxlanTunnelKey const& tunnelKey, IpGenAddr const& dip) {
  auto const& sip = tunnelKey.srcIp();
  TRACE(1, " : sip: {} dip: {} AddressFamily: {} udpPort: {}", sip, dip, sip.af(), tunnelKey.udpDestPort());
  if (sip.af() == AddressFamily::unknown) INVARIANT(false && "SIP is not a valid ipv4/6 address");
  return dip.isIpv6() ? insertIpv6Entry(tunnelKey, dip) : insertIpv4Entry(tunnelKey, dip);
}

TesselVxlanEgrL3TunnelTablesProgrammer::Handle TesselVxlanEgrL3TunnelTablesProgrammer::insertIpv4Entry(
    VxlanTunnelKey const& tunnelKey, IpGenAddr const& dip) {
  EgrL3Ipv4TunnelTable::Entry entry;
  entry.tunnelEntry = true;
  if (tunnelKey.udpSrcPortValid()) {
    TRACE(1, "tunnelKey UdpSrcPort is Valid");
    entry.udpSrcPortValid = true;
    entry.udpSrcPort = tunnelKey.udpSrcPort();
  }
  return headerRef(egrL3Ipv4TunnelTable(), ipv4Key(tunnelKey.srcIp(), dip), entry, tunnelKey, dip, __func__);
}

TesselVxlanEgrL3TunnelTablesProgrammer::Handle TesselVxlanEgrL3TunnelTablesProgrammer::insertIpv6Entry(
    VxlanTunnelKey const& tunnelKey, IpGenAddr const& dip) {
  EgrL3Ipv6TunnelTable::Entry entry;
  return headerRef(egrL3Ipv6TunnelTable(), ipv6Key(tunnelKey.srcIp(), dip), entry, tunnelKey, dip, __func__);
}

TesselVxlanEgrL3TunnelTablesProgrammer::Handle TesselVxlanEgrL3TunnelTablesProgrammer::entryWeakRef(
    IpGenAddr const& srcIpAddr, IpGenAddr const& dstIpAddr) const {
  if (dstIpAddr.isIpv6()) return egrL3Ipv6TunnelTable()->entryWeakRef(ipv6Key(srcIpAddr, dstIpAddr));
  return egrL3Ipv4TunnelTable()->entryWeakRef(ipv4Key(srcIpAddr, dstIpAddr));
}

void TesselVxlanEgrL3TunnelTablesProgrammer::programDefaultTunnelEntry() {
  auto const& attributes = *egrL3TunnelTableAttributes();
  EgrL3Ipv4TunnelTable::Entry entry;
  entry.hdrSelectA = attributes.defaultHdrSelectA();
  entry.hdrSelectB = attributes.defaultHdrSelectB();
  entry.udpDestPort = attributes.defaultUdpDestPort();
  egrL3Ipv4TunnelTable()->entryWriteAtIndex(Asic::Index(0), EgrL3TunnelKey(), entry);
}

EgrL3TunnelKey TesselVxlanEgrL3TunnelTablesProgrammer::ipv4Key(IpGenAddr const& sip, IpGenAddr const& dip) const {
  bool const dipInKey = dip.isIpv4() && egrL3TunnelTableAttributes()->ipv4DipInKey();
  return {sip, dipInKey ? dip : IpGenAddr()};
}

EgrL3Ipv6TunnelKey TesselVxlanEgrL3TunnelTablesProgrammer::ipv6Key(IpGenAddr const& sip, IpGenAddr const& dip) const {
  return {sip, egrL3TunnelTableAttributes()->ipv6DipUpper64Only() ? dip.getUpper64V6Addr() : dip};
}

template <class Table>
TesselVxlanEgrL3TunnelTablesProgrammer::Handle TesselVxlanEgrL3TunnelTablesProgrammer::headerRef(
    Dovel::Ptr<Table> const& table, typename Table::Key const& key, typename Table::Entry& entry,
    VxlanTunnelKey const& tunnelKey, IpGenAddr const& dip, [[maybe_unused]] char const* caller) {
  auto const& attributes = *egrL3TunnelTableAttributes();
  // The row says no more of the destination than its key: what the key leaves out is written elsewhere.
  entry.sip = key.sip();
  entry.dip = key.dip();
  entry.tosBasePtr = U7(qosTrustStatus()->tosBasePtr());
  TRACE_IN(caller, 1, "tosBasePtr  {} for dip: {}", entry.tosBasePtr, dip);
  entry.outerDscpFromInner = U2(vxlanConfigDir()->dscpPropagation() ? dscpCopied : dscpOfTrustMap);
  TRACE_IN(caller, 1, "outerDscpFromInner  {} for dip: {}", entry.outerDscpFromInner, dip);
  entry.ttl = tunnelKey.ttl();
  entry.udpDestPort = tunnelKey.udpDestPort();
  entry.hdrSelectA = attributes.tunnelHdrSelectA();
  entry.hdrSelectB = attributes.tunnelHdrSelectB();
  entry.writeResponse = HeaderResponse<Table>{table, key};
  return table->entryRef(key, std::move(entry), Asic::Report::atOnce);
}

}  // namespace TesselVxlan
