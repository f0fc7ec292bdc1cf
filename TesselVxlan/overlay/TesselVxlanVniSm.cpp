#include "TesselVxlan/overlay/TesselVxlanVniSm.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"

KILN_TRACE_FILE("TesselVxlanVniSm");

namespace TesselVxlan {

using Asic::EntryState;
using Vane::VXLAN::VtiVlanKey;
using Vane::VXLAN::VtiVniKey;
using VaneHelper::VaneHelperVniConfigEntry;
using VaneHelper::VaneHelperVniStatusEntry;
using Vxlan::VniExt;
using Vxlan::VniExtOrNone;

namespace {

Kiln::LogHandle mappingFull(TesselLog::TESSEL_VXLAN_VNI_VFI_MAPPING_RESOURCE_FULL, 0, 1.0, 0, 0);

/// The interface of remote mappings.
Meshal::IntfId const& vti() {
  static Meshal::IntfId const vti("Vxlan1");
  return vti;
}

L2TunnelVnIdTable::Key rowOf(VniExtOrNone vni) { return {U24(vni.value())}; }

/// The value of a mapping that is wanted or has a status. REQUIRES: it has a VNI.
VniExt vniOf(VniExtOrNone vni) {
  INVARIANT(!vni.isNone());
  return VniExt(vni.value());
}

struct VnIdResponse {
  Dovel::Ptr<TesselVxlanHelperVniSm const> sm;
  L2TunnelVnIdTable::Key key;

  void operator()(EntryState state) const {
    if (state != EntryState::full) return;
    Kiln::log(mappingFull, key.vni, sm->l2TunnelVnIdTable()->entry(key).vfi);
    TRACE_IN("operator()", 1, "The l2TunnelVnIdTable programming failed");
  }
};

}  // namespace

TesselVxlanHelperVniSm::TesselVxlanHelperVniSm(Dovel::Ptr<VaneHelper::VaneHelperVniConfig const> helperVniConfig,
                                               Dovel::Ptr<VaneHelper::VaneHelperVniStatus> helperVniStatus,
                                               Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                               Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                               Dovel::Ptr<TesselCentral::VfiCapabilityStatus const> vfiCapabilities,
                                               Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities,
                                               Dovel::Ptr<TesselCentral::VlanVfiDir const> vlanVfiDir,
                                               Dovel::Ptr<L2TunnelVnIdTable> l2TunnelVnIdTable)
    : VlanVniMapSm(std::move(helperVniConfig), std::move(helperVniStatus), std::move(statewayEm), std::move(fcsd),
                   std::move(vfiCapabilities), std::move(vlanVfiDir)),
      vxlanCapabilities_(std::move(vxlanCapabilities)),
      l2TunnelVnIdTable_(std::move(l2TunnelVnIdTable)) {
  handleInitialized();
}

void TesselVxlanHelperVniSm::handleInitialized() {
  pktDrvIs("pktDrv", Anvil::ioctlDrvFabFactory(fcsd()->ioctlDrvFab()));
  handleLogicalFapId();
}

void TesselVxlanHelperVniSm::fapTablesIs(LogicalFap::LogicalFapId fapId, TesselCentral::ChipInfo const& chipInfo) {
  if (egrVfiToVniMappingTableHas(fapId)) return;
  auto const table = egrVfiToVniMappingTableFactory();
  egrVfiToVniMappingTableIs(fapId, table);
  Asic::bringUp(*table, statewayEm(), chipInfo, fapId.value());
  INVARIANT(egrVfiToVniMappingTable(fapId)->entrys() == 0);
}

// Wanted mappings first: the other statuses are then those of a former process.
void TesselVxlanHelperVniSm::resynchronise() {
  handleVlanVniMap();
  handleRemoteVniConfig();
  handleHwInit();
  cleanupHelperVniStatus();
  cleanupRemoteVniStatus();
}

void TesselVxlanHelperVniSm::handleVlanVniMap(VtiVlanKey const& key) {
  auto const vlanId = key.vlanId();
  TRACE(1, "handleVlanVniMap vti: {} vlanId: {}", key.intfId(), vlanId);
  auto const configEntry = helperVniConfig()->vlanVniMap(key);
  switch (configEntry.action()) {
    case VaneHelperVniConfigEntry::add:
      return addVlanVni(key, vniOf(configEntry.vni()));
    case VaneHelperVniConfigEntry::remove: {
      TRACE(1, " Removing VNI to VLAN mapping  vlanId : {}", vlanId);
      auto const vni = helperVniStatus()->statusEntry(key).vni();
      pktDrv()->doPktDrvVniToVlanMap(vni, 0);
      return removeVnIdVlanMapping(vni, vlanId);
    }
    case VaneHelperVniConfigEntry::none:
      return cleanupVlanVni(key);
    default:
      INVARIANT(false && "Unknown action");
  }
}

void TesselVxlanHelperVniSm::addVlanVni(VtiVlanKey const& key, VniExt vni) {
  auto const vlanId = key.vlanId();
  auto const vfi = vfiOf(vlanId);
  auto const& former = helperVniStatus()->statusEntry(key);
  // A former process can have left the VLAN with another VNI.
  if (former != StatusEntry() && former.vni() != VniExtOrNone(vni)) cleanupVlanVni(key);
  if (vxlanCapabilities()->singleVnIdTableUser()) displaceRemote(vni);
  L2TunnelVnIdTable::Entry entry;
  entry.vfi = vfi;
  entry.writeResponse = VnIdResponse{Dovel::Ptr<TesselVxlanHelperVniSm const>(this), rowOf(vni)};
  l2TunnelVnIdTable()->entryCommit(rowOf(vni), std::move(entry));
  egrVniIs(vlanId, vni);
  helperVniStatus()->statusEntryIs(key, StatusEntry{vlanId, vni, StatusEntry::programmed});
  pktDrv()->doPktDrvVniToVlanMap(vni, vlanId);
  TRACE(1, " Added vni-vfi map for vlanId: {} vfi: {} vni: {}", vlanId, vfi, vni);
}

void TesselVxlanHelperVniSm::displaceRemote(VniExt vni) {
  if (!l2TunnelVnIdTable()->entryHas(rowOf(vni))) return;
  auto const vlanId = currentVlan(vni);
  auto const remote = findRemoteVniStatusEntry(vni);
  TRACE(1, " Remote entry status for local Vni is {}", remote);
  // One that waits already has no hardware, and keeps its own VLAN.
  if (remote == StatusEntry() || remote.action() == StatusEntry::pending) return;
  removeRemoteVnidVlanMapping(vni, vlanId);
  helperVniStatus()->remoteVniStatusEntryIs(VtiVniKey{vti(), vni}, StatusEntry{vlanId, vni, StatusEntry::pending});
  TRACE(1, " Change Remote entry status to pending ");
}

void TesselVxlanHelperVniSm::egrVniIs(std::uint16_t vlanId, VniExt vni) {
  EgrVfiIndexHash const row{vlanId};
  for (auto const& [fapId, table] : egrVfiToVniMappingTableColl()) {
    auto entry = table->entry(row);
    entry.vni = vni.value();
    table->entryCommit(row, entry);
  }
}

void TesselVxlanHelperVniSm::cleanupVlanVni(VtiVlanKey const& key) {
  auto const statusEntry = helperVniStatus()->statusEntry(key);
  INVARIANT(statusEntry != StatusEntry());
  auto const vlanId = statusEntry.vlanId();
  auto const vni = vniOf(statusEntry.vni());
  TRACE(1, " statusEntry vlanId {} vni {}", vlanId, vni);
  for (auto const& [fapId, table] : egrVfiToVniMappingTableColl()) table->entryRemove(EgrVfiIndexHash{vlanId});
  pktDrv()->doPktDrvVniToVlanMap(vni, 0);
  removeVnIdVlanMapping(vni, vlanId);
  helperVniStatus()->statusEntryDel(key);
  if (!vxlanCapabilities()->singleVnIdTableUser()) return;
  auto const remote = findRemoteVniStatusEntry(vni);
  if (remote.action() != StatusEntry::pending) return;
  // A former process may have left one that is not wanted any more.
  if (!helperVniConfig()->remoteVniConfigHas(VtiVniKey{vti(), vni})) return;
  TRACE(1, " Remote entry status for local Vni is, installing it {}", remote);
  addRemoteVnidVlanMapping(vni, remote.vlanId());
}

void TesselVxlanHelperVniSm::cleanupHelperVniStatus() {
  bool cleaned = false;
  for (auto const& key : Kiln::keysOf(helperVniStatus()->statusEntryColl())) {
    if (helperVniConfig()->vlanVniMapHas(key)) continue;
    cleanupVlanVni(key);
    cleaned = true;
  }
  // Its VNI can be one that another mapping has got meanwhile.
  if (!cleaned) return;
  handleVlanVniMap();
  handleRemoteVniConfig();
}

void TesselVxlanHelperVniSm::cleanupRemoteVniStatus() {
  for (auto const& key : Kiln::keysOf(helperVniStatus()->remoteVniStatusEntryColl())) {
    if (helperVniConfig()->remoteVniConfigHas(key)) continue;
    helperVniStatus()->remoteVniStatusEntryDel(key);
    // The packet driver outlives the process; the row of another mapping shows that it has its VLAN.
    if (!l2TunnelVnIdTable()->entryHas(rowOf(key.vni()))) pktDrv()->doPktDrvVniToVlanMap(key.vni(), 0);
  }
}

void TesselVxlanHelperVniSm::handleRemoteVniConfig() {
  for (auto const& key : Kiln::keysOf(helperVniConfig()->remoteVniConfigColl())) handleRemoteVniConfig(key);
}

void TesselVxlanHelperVniSm::handleRemoteVniConfig(VtiVniKey const& key) {
  auto const configEntry = helperVniConfig()->remoteVniConfig(key);
  switch (configEntry.action()) {
    case VaneHelperVniConfigEntry::add:
      TRACE(1, " vlanId : {} vni: {} remoteVniConfigEntry ", configEntry.vlanId(), configEntry.vni());
      return addRemoteVnidVlanMapping(vniOf(configEntry.vni()), configEntry.vlanId());
    case VaneHelperVniConfigEntry::remove:
      return TRACE(1, ": For remoteVni entries, config entry case  action {} is not supported ", configEntry.action());
    case VaneHelperVniConfigEntry::none: {
      INVARIANT(helperVniStatus()->remoteVniStatusEntryHas(key));
      auto const statusEntry = helperVniStatus()->remoteVniStatusEntry(key);
      TRACE(1, " remoteVniStatusEntry {}", statusEntry);
      return removeRemoteVnidVlanMapping(vniOf(statusEntry.vni()), statusEntry.vlanId());
    }
    default:
      INVARIANT(false && "Unknown action");
  }
}

TesselVxlanHelperVniSm::StatusEntry const& TesselVxlanHelperVniSm::findRemoteVniStatusEntry(VniExt vni) const {
  return helperVniStatus()->remoteVniStatusEntry(VtiVniKey{vti(), vni});
}

void TesselVxlanHelperVniSm::addRemoteVnidVlanMapping(VniExt vni, std::uint16_t vlanId) {
  VtiVniKey const key{vti(), vni};
  if (isHeldByLocal(vni)) {
    helperVniStatus()->remoteVniStatusEntryIs(key, StatusEntry{vlanId, vni, StatusEntry::pending});
    return TRACE(1, " Remote entry status pending ");
  }
  L2TunnelVnIdTable::Entry entry;
  entry.vfi = vfiOf(vlanId);
  l2TunnelVnIdTable()->entryCommit(rowOf(vni), entry);
  helperVniStatus()->remoteVniStatusEntryIs(key, StatusEntry{vlanId, vni, StatusEntry::programmed});
  pktDrv()->doPktDrvVniToVlanMap(vni, vlanId);
  TRACE(1, " Added vni-vfi map for vlanId: {}", vlanId);
}

bool TesselVxlanHelperVniSm::isHeldByLocal(VniExt vni) const {
  if (!l2TunnelVnIdTable()->entryHas(rowOf(vni))) return false;
  auto const local = helperVniStatus()->statusEntry(VtiVlanKey{vti(), currentVlan(vni)});
  TRACE(1, " local entry status for remoteVni is {}", local);
  // The VLAN can be mapped to another VNI, while the row is that of a remote mapping.
  return local.vni() == VniExtOrNone(vni);
}

void TesselVxlanHelperVniSm::removeRemoteVnidVlanMapping(VniExt vni, std::uint16_t vlanId) {
  TRACE(1, " removing vni->vlan mapping for remoteVni {}", vni);
  VtiVniKey const vtiVniKey{vti(), vni};
  INVARIANT(helperVniStatus()->remoteVniStatusEntryHas(vtiVniKey));
  if (helperVniStatus()->remoteVniStatusEntry(vtiVniKey).action() == StatusEntry::programmed) {
    pktDrv()->doPktDrvVniToVlanMap(vni, 0);
    removeVnIdVlanMapping(vni, vlanId);
  }
  helperVniStatus()->remoteVniStatusEntryDel(vtiVniKey);
}

void TesselVxlanHelperVniSm::removeVnIdVlanMapping(Vni vni, std::uint16_t vlanId) {
  if (vni.isNone() || !l2TunnelVnIdTable()->entryHas(rowOf(vni))) return;
  auto const current = currentVlan(vniOf(vni));
  if (current == vlanId) return l2TunnelVnIdTable()->entryRemove(rowOf(vni));
  TRACE(1, " VNI to VLAN mapping changed, delete ignored, currentVlan {}, vlanId{}", current, vlanId);
}

std::uint16_t TesselVxlanHelperVniSm::currentVlan(VniExt vni) const {
  return vlanOf(l2TunnelVnIdTable()->entry(rowOf(vni)).vfi);
}

}  // namespace TesselVxlan
