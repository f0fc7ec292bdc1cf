#include "TesselVxlan/frame/TesselVxlanMounterSmWrapper.h"
#include "TesselVxlan/frame/Toggles.h"
#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanMounterSmWrapper");

namespace TesselVxlan {

namespace {

/// The value of the abstraction's VNI state after a start; what it means is the abstraction's.
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
  // The tables are not up yet, whatever an earlier wrapper of this process has left: the default rows hang on the
  // change.
  vxlanState()->nextHop2DefaultInitIs(false);
  vxlanState()->egrL3TunnelDefaultInitIs(false);
  vxlanState()->vpDefaultInitIs(false);
}

void TesselVxlanMounterSmWrapper::makeProgrammers() {
  vtepGrpTnlIdMapDirIs(vxlanVtepGroupTunnelIdMapDirFactory());
  tunnelTermTableProgrammerIs(statewayEm(), fcsd(), vxlanConfigDir());
  l3Oif2TableHelperIs(localEntityManager());
  nextHopTableProgrammerIs(statewayEm(), fcsd(), routingStatus(), vaneL3IntfTable(), l3Oif2TableHelper(), ipmcTable_,
                           vxlanUnderlayFloodingHw());
  l3Oif1TableProgrammerIs(statewayEm(), fcsd());
  egrL3TunnelTablesProgrammerIs(statewayEm(), fcsd(), qosTrustStatusAllLocal(), vxlanConfigDir());
  virtualPortTableProgrammerIs(statewayEm(), fcsd(), vxlanToL2State(), vxlanCapabilities(), dvpToVtepMapping(),
                               tunnelIndexToVtepMapping());
  underlayEcmpProgrammerIs(statewayEm(), fcsd(), nextHopTableProgrammer());
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
  // Its watcher, this object, writes the default virtual ports, which hold the default header.
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
