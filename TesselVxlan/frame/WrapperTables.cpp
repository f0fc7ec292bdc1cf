#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "TesselVxlan/frame/Toggles.h"
#include "TesselVxlan/nexthop/VpLagEcmpCascadeProgrammer.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanMounterSmWrapper");

namespace TesselVxlan {

namespace {

/// The VNI state after a start; the forwarding abstraction defines its meaning.
constexpr std::uint8_t vniSmStateAfterStart = 3;

}  // namespace

void TesselVxlanMounterSmWrapper::initStatewayState() {
  bindLocalEntities();
  bindTableDirs();
  bindQos();
  makeMcastTunnelPair();
  bindMountedEntities();
  bindChipAttributes();
  doBindEntities();
  cleanupHitfulRestart();
  makeProgrammers();
  TablesDone done;
  initTermAndPortTables();
  initNextHopTables(done);
  initHeaderTables(done);
  initVniAndRemapTables();
  tablesInitializedIs(true);
  runningStateIfDone(done);
  initIndirection();
}

void TesselVxlanMounterSmWrapper::cleanupHitfulRestart() {
  TRACE(0, "cleanupHitfulRestart");
  if (auto const& her = tunnelStatusDir()->tunnelStatus(Vane::vxlanHerTunnel_)) her->tunnelStatusEntryDelAll();
  if (auto const& member = tunnelStatusDir()->tunnelStatus(Vane::vxlanMemberTunnel_)) member->tunnelStatusEntryDelAll();
  auto const toggle = toggleVaneVniSmInTesselL2Enabled();
  if (!toggle) vaneVtepGroupStatusDir()->vaneVtepGroupStatusDelAll();
  vxlanToL2State()->vtepIpToTnlIdNhIdMapDelAll();
  vxlanToL2State()->stageVlanVniMappingReadyIs(false);
  if (!toggle) vxlanInfo()->vaneVniSmState()->vniSmStateIs(vniSmStateAfterStart);
  clearLocalState();
}

// The local store survives the wrapper when a second one replaces it in the same process; the rows do not.
void TesselVxlanMounterSmWrapper::clearLocalState() {
  TesselL3Common::TesselVxlanState const none;
  auto& state = *vxlanState();
  state.mlagVtepAddrIs(none.mlagVtepAddr());
  state.localVtepIs(none.localVtep());
  state.localVtep6Is(none.localVtep6());
  state.vArpVtepAddrIs(none.vArpVtepAddr());
  state.vArpVtepAddr6Is(none.vArpVtepAddr6());
  state.udpSrcPortValidIs(none.udpSrcPortValid());
  state.udpSrcPortIs(none.udpSrcPort());
  state.udpPortIs(none.udpPort());
  // The fixed rows are written on the change from false to true.
  state.nextHop2DefaultInitIs(false);
  state.egrL3TunnelDefaultInitIs(false);
  state.vpDefaultInitIs(false);
  dvpToVtepMapping()->dvpToVtepMapDelAll();
  tunnelIndexToVtepMapping()->tunnelIndexToVtepMapDelAll();
  bumVtepConfigDir()->bumVtepConfigDelAll();
  encapIdToBumVtepIpConfigDir()->vxlanReverseConfigDelAll();
}

void TesselVxlanMounterSmWrapper::makeProgrammers() {
  vtepGrpTnlIdMapDirIs(vxlanVtepGroupTunnelIdMapDirFactory());
  tunnelTermTableProgrammerIs();
  l3Oif2TableHelperIs(localEntityManager());
  nextHopTableProgrammerIs(l3Oif2TableHelper(), ipmcTable_, vxlanUnderlayFloodingHw());
  l3Oif1TableProgrammerIs();
  herNextHopTableProgrammerIs(l3Oif1TableProgrammer(), l3Oif2TableHelper());
  egrL3TunnelTablesProgrammerIs();
  virtualPortTableProgrammerIs();
  underlayEcmpProgrammerIs();
  vpLagEcmpProgrammerIs(vpLagEcmpCascadeProgrammerFactory(statewayEm(), fcsd(), vxlanToL2State(), localEntityManager(),
                                                          vtepGrpTnlIdMapDir()));
  // First of all tables, since it makes those that it shares with the other programmers.
  vpLagEcmpProgrammer()->initTables(chipInfo());
}

Dovel::Ptr<TesselVxlanTunnelTermTableProgrammer> TesselVxlanMounterSmWrapper::tunnelTermTableProgrammerIs() {
  return tunnelTermTableProgrammerIs(statewayEm(), fcsd(), vxlanConfigDir());
}

Dovel::Ptr<NextHopTableProgrammer> TesselVxlanMounterSmWrapper::nextHopTableProgrammerIs(
    Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper> l3Oif2TableHelper, Dovel::Ptr<TesselMcast::IpmcTable> ipmcTable,
    bool vxlanUnderlayFloodingHw) {
  return nextHopTableProgrammerIs(statewayEm(), fcsd(), routingStatus(), vaneL3IntfTable(),
                                  std::move(l3Oif2TableHelper), std::move(ipmcTable), vxlanUnderlayFloodingHw);
}

Dovel::Ptr<VxlanL3Oif1TableProgrammer> TesselVxlanMounterSmWrapper::l3Oif1TableProgrammerIs() {
  return l3Oif1TableProgrammerIs(statewayEm(), fcsd());
}

Dovel::Ptr<HerNextHopTableProgrammer> TesselVxlanMounterSmWrapper::herNextHopTableProgrammerIs(
    Dovel::Ptr<VxlanL3Oif1TableProgrammer> l3Oif1TableProgrammer,
    Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper> l3Oif2TableHelper) {
  return herNextHopTableProgrammerIs(statewayEm(), fcsd(), vaneL3IntfTable(), std::move(l3Oif1TableProgrammer),
                                     std::move(l3Oif2TableHelper));
}

Dovel::Ptr<TesselVxlanEgrL3TunnelTablesProgrammer> TesselVxlanMounterSmWrapper::egrL3TunnelTablesProgrammerIs() {
  return egrL3TunnelTablesProgrammerIs(statewayEm(), fcsd(), qosTrustStatusAllLocal(), vxlanConfigDir());
}

Dovel::Ptr<VirtualPortProgrammer> TesselVxlanMounterSmWrapper::virtualPortTableProgrammerIs() {
  return virtualPortTableProgrammerIs(statewayEm(), fcsd(), vxlanToL2State(), vxlanCapabilities(), dvpToVtepMapping(),
                                      tunnelIndexToVtepMapping());
}

Dovel::Ptr<UnderlayEcmpProgrammer> TesselVxlanMounterSmWrapper::underlayEcmpProgrammerIs() {
  return underlayEcmpProgrammerIs(statewayEm(), fcsd(), nextHopTableProgrammer());
}

void TesselVxlanMounterSmWrapper::initTermAndPortTables() {
  auto& term = *tunnelTermTableProgrammer();
  if (chipHas<AllowedPortBitmapProfile>()) {
    term.initAllowedPortsProfileTable(chipInfo());
    INVARIANT(tunnelTermTableProgrammer()->allowedPortBitmapProfile());
  }
  auto const virtualPorts = virtualPortDir_->createEntity<TesselL3Common::VirtualPortTableMerged>("virtualPortTable");
  virtualPortTableProgrammer()->virtualPortTableIs(virtualPorts);
  Asic::bringUp(*virtualPorts, statewayEm(), chipInfo());
  INVARIANT(virtualPortTableProgrammer()->virtualPortTable());
  virtualPortTableProgrammer()->initTables(chipInfo());
  term.initSipTable(chipInfo());
  INVARIANT(tunnelTermTableProgrammer()->l2TunnelIpv4SipTable());
  if (chipHas<L2TunnelIpv6SipTable>()) {
    term.initSipV6Table(chipInfo());
    INVARIANT(tunnelTermTableProgrammer()->l2TunnelIpv6SipTable());
  }
}

void TesselVxlanMounterSmWrapper::initNextHopTables(TablesDone& done) {
  l3Oif2TableHelper()->initTables(chipInfo());
  INVARIANT(l3Oif2TableHelper()->initialized());
  nextHopTableProgrammer()->mountPathIs(nextHop2Dir_);
  nextHopTableProgrammer()->initTables(chipInfo());
  INVARIANT(nextHopTableProgrammer()->l3NextHop2Table());
  vxlanState()->nextHop2DefaultInitIs(true);
  auto const vxlanAttr = TesselProfile::feature<TesselChipAttributesVxlan>(chipInfo());
  if (vxlanAttr) l3Oif1TableProgrammer()->initTables(chipInfo());
  if (vxlanAttr && vxlanAttr->vxlanHerNextHopTableSupported()) {
    INVARIANT(l3Oif1TableProgrammer()->vxlanEgrL3Oif1Table());
    herNextHopTableProgrammer()->mountPathIs(herNextHop1Dir_);
    herNextHopTableProgrammer()->initTables(chipInfo());
    INVARIANT(herNextHopTableProgrammer()->herNextHop1Table());
  }
  if (!chipHas<EcmpMember1Table>()) return;
  underlayEcmpProgrammer()->mountPathIs(ecmpNhTableDir());
  underlayEcmpProgrammer()->initTables(chipInfo());
  INVARIANT(underlayEcmpProgrammer()->ecmpGroup1Table());
  done.uecmp = true;
}

void TesselVxlanMounterSmWrapper::initHeaderTables(TablesDone& done) {
  auto& term = *tunnelTermTableProgrammer();
  term.initDipTable(chipInfo());
  INVARIANT(tunnelTermTableProgrammer()->l2TunnelIpv4DipTable());
  if (chipHas<L2TunnelIpv6DipTable>()) {
    term.initDipV6Table(chipInfo());
    INVARIANT(tunnelTermTableProgrammer()->l2TunnelIpv6DipTable());
  }
  egrL3TunnelTablesProgrammer()->initTables(chipInfo());
  INVARIANT(egrL3TunnelTablesProgrammer()->egrL3Ipv4TunnelTable());
  // This object's own watcher writes the default virtual ports, which hold the default header's handle.
  vxlanState()->egrL3TunnelDefaultInitIs(true);
  done.egrL3 = true;
  done.dvp = true;
}

void TesselVxlanMounterSmWrapper::initVniAndRemapTables() {
  l2TunnelVnIdTableIs(l2TunnelVnIdTableFactory());
  Asic::bringUp(*l2TunnelVnIdTable(), statewayEm(), chipInfo());
  INVARIANT(l2TunnelVnIdTable());
  INVARIANT(l2TunnelVnIdTable()->entrys() == 0);
  TRACE(0, " initialising underlayMcast table ");
  vxlanV4UnderlayMcastTableIs(vxlanV4UnderlayMcastTableFactory());
  Asic::bringUp(*vxlanV4UnderlayMcastTable(), statewayEm(), chipInfo());
  INVARIANT(vxlanV4UnderlayMcastTable());
  if (!chipHas<TesselEpre::EpreCcbeNextHopRemapTable>()) return;
  epreNextHopRemapTableIs(routeDestinationTableDir()->createEntity<TesselEpre::EpreCcbeNextHopRemapTable>("511"));
  INVARIANT(epreNextHopRemapTable());
  Asic::bringUp(*epreNextHopRemapTable(), statewayEm(), chipInfo());
}

void TesselVxlanMounterSmWrapper::runningStateIfDone(TablesDone const& done) {
  if (done.egrL3 && done.uecmp && done.dvp) {
    TRACE(0, " vxlanSmRunningState is set to true ");
    runningState()->runningIs(true);
  } else {
    TRACE(0, "FLAGS : EgrL3={} uecmp={} dvp={}", done.egrL3, done.uecmp, done.dvp);
  }
}

void TesselVxlanMounterSmWrapper::initIndirection() {
  if (!chipHas<EcmpIndirectionTableConfigReg>()) return;
  ecmpIndirectionTableConfigRegIs(ecmpIndirectionTableConfigRegFactory());
  INVARIANT(ecmpIndirectionTableConfigReg());
  ecmpIndirectionTableConfigReg()->doInit(unit(), statewayEm(), chipInfo());
  ecmpIndirectionTableConfigReg()->doPublishHwTableMountInfo();
  EcmpIndirectionTableConfigReg::Entry entry;
  entry.indirectionBasePtr = indirectionBasePtr();
  ecmpIndirectionTableConfigReg()->entryCommit(Asic::Index(0), entry);
}

}  // namespace TesselVxlan
