#include "TesselVxlan/nexthop/HerNextHopTableProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("HerNextHopTableProgrammer");

namespace TesselVxlan {

namespace {

// Codes of the chip's row formats.
constexpr std::uint8_t herEntry = 1;
constexpr std::uint8_t herFlag = 1;
constexpr std::uint8_t herCode = 3;

}  // namespace

HerNextHopTableProgrammer::HerNextHopTableProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<VaneL3Intf::Table const> vaneL3IntfTable, Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer,
    Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper const> l3Oif2TableHelper)
    : NextHopTableProgrammerBase(std::move(statewayEm), std::move(fcsd)),
      vaneL3IntfTable_(std::move(vaneL3IntfTable)),
      l3Oif1TableProgrammer_(std::move(l3Oif1TableProgrammer)),
      l3Oif2TableHelper_(std::move(l3Oif2TableHelper)) {}

void HerNextHopTableProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "initTables");
  vxlanAttributes_ = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo);
  INVARIANT(vxlanAttributes());
  if (!vxlanAttributes()->vxlanHerNextHopTableSupported()) return;
  herNextHop1Table_ = mountPath()->createEntity<HerNextHop1Table>("511");
  Asic::bringUp(*herNextHop1Table(), statewayEm(), chipInfo);
  INVARIANT(herNextHop1Table()->entrys() == 0);
  herNextHop2Table_ = herNextHop2TableFactory();
  Asic::bringUp(*herNextHop2Table(), statewayEm(), chipInfo);
  INVARIANT(herNextHop2Table()->entrys() == 0);
}

NextHopTableProgrammerBase::Handle HerNextHopTableProgrammer::insertEntry(Vane::TunnelKey const& tunnelKey,
                                                                          Vane::NextHopEntry const& nextHopEntry,
                                                                          Handle const& vpHandle) {
  INVARIANT(vxlanAttributes()->vxlanHerNextHopTableSupported());
  TRACE(1, " NextHopEntry: {}, tunnelKey: {}", nextHopEntry, tunnelKey);
  auto const& vtepIp = tunnelKey.dst();
  TRACE(1, " Program EgrL3NextHop2, macAddr: {} vtepIp: {}", nextHopEntry.ethAddr(), vtepIp);
  HerNextHop2Table::Entry nextHop2;
  nextHop2.macAddr = nextHopEntry.ethAddr();
  nextHop2.herEntry = herEntry;
  HerNextHop1Table::Entry entry;
  entry.herNextHop2Handle =
      herNextHop2Table()->entryRef(L3NextHop2Key{nextHopEntry.ethAddr(), nextHopEntry.l3Intf(), herEntry}, nextHop2);
  entry.oif1Handle = l3Oif1TableProgrammer()->insertEntry(TunnelType::her);
  // The id of a layer 3 interface is its VLAN.
  auto const l3id = vaneL3IntfTable()->intfIdToL3Id(nextHopEntry.l3Intf());
  entry.l3Oif2Handle = l3Oif2TableHelper()->getEgrL3OifHandle(Bridging::VlanIdOrNone(l3id));
  entry.vpHandle = vpHandle;
  entry.herFlag = herFlag;
  entry.herCode = herCode;
  return herNextHop1Table()->entryCommit(TesselL3Common::L3NextHop1Key{vtepIp, herEntry}, entry);
}

void HerNextHopTableProgrammer::deleteEntry(Meshal::IpGenAddr const& vtepIp) {
  INVARIANT(vxlanAttributes()->vxlanHerNextHopTableSupported());
  TRACE(1, " vtepIp: {}", vtepIp);
  herNextHop1Table()->entryRemove(TesselL3Common::L3NextHop1Key{vtepIp, herEntry});
}

}  // namespace TesselVxlan
