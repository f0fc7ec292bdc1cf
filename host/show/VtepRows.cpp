#include "host/show/VtepRows.h"

#include <algorithm>

#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/tables/EpreTables.h"
#include "platform/tessel/tables/HerNextHopTables.h"
#include "platform/tessel/tables/IngL3EcmpMember0Table.h"
#include "platform/tessel/tables/L2TunnelTermTables.h"
#include "platform/tessel/tables/L3NextHop1Table.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"

namespace Host {

namespace {

using Meshal::IpGenAddr;

constexpr std::uint8_t herEntry = 1;

NeededRow overlayRow(Asic::Chip const& chip, IpGenAddr const& vtep) {
  auto const cascaded = rowOf<TesselVxlan::IngL3EcmpMember0Table>(chip, vtep, true);
  return chip.store(cascaded.table) ? cascaded : rowOf<TesselVxlan::L3NextHop1Table>(chip, vtep, true);
}

NeededRow sourceRow(Asic::Chip const& chip, IpGenAddr const& vtep) {
  using namespace TesselVxlan;
  return vtep.isIpv6() ? rowOf<L2TunnelIpv6SipTable>(chip, L2TunnelIpv6Key{vtep})
                       : rowOf<L2TunnelIpv4SipTable>(chip, L2TunnelIpv4Key{vtep.v4Addr()});
}

}  // namespace

RowFinder::RowFinder(Agent const& agent)
    : chip_(agent.chip()),
      maps_(agent.state<TesselCentral::VxlanToL2State>(kVxlanToL2StatePath)),
      floodRecords_(agent.local<TesselL3Common::TesselVxlanBumVtepConfigDir>(kFloodRecordsPath)),
      evpn_(agent.state<Evpn::EvpnStatus>("evpn/status")) {
  auto const attributes = agent.profile().feature<TesselVxlan::TesselChipAttributesVxlan>();
  herTables_ = attributes && attributes->vxlanHerNextHopTableSupported();
}

IpGenAddr RowFinder::localVtep(IpGenAddr const& vtep) const {
  auto const& map = maps_->vtepIpToTnlIdNhIdMap(vtep);
  return map ? map->getLocalVtep(vtep.af()) : IpGenAddr();
}

std::optional<std::uint32_t> RowFinder::encapId(IpGenAddr const& vtep) const {
  auto const record = floodRecords_ ? floodRecords_->bumVtepConfig(vtep) : nullptr;
  return record ? std::optional(record->encapId().value()) : std::nullopt;
}

NeededRow RowFinder::copyRow(Meshal::IntfId port, IpGenAddr const& vtep) const {
  using TesselEpre::EpreCcbeNextHopRemapTable;
  if (herTables_) return rowOf<TesselVxlan::HerNextHop1Table>(chip_, {vtep, herEntry}, true);
  return rowOf<EpreCcbeNextHopRemapTable>(chip_, TesselEpre::EpreRemapKey{port, vtep}, true);
}

std::vector<FloodCopy> RowFinder::copies(IpGenAddr const& vtep) const {
  auto const record = floodRecords_ ? floodRecords_->bumVtepConfig(vtep) : nullptr;
  if (!record) return {};
  std::vector<FloodCopy> copies;
  for (auto const& nextHop : record->nextHopsColl()) {
    copies.push_back({nextHop->port(), nextHop->addr(), copyRow(nextHop->port(), vtep)});
  }
  std::sort(copies.begin(), copies.end(), [](auto const& a, auto const& b) { return a.port.name() < b.port.name(); });
  return copies;
}

NeededRow RowFinder::destination(IpGenAddr const& vtep) const {
  using namespace TesselVxlan;
  auto const local = localVtep(vtep);
  return vtep.isIpv6() ? rowOf<L2TunnelIpv6DipTable>(chip_, L2TunnelIpv6Key{local})
                       : rowOf<L2TunnelIpv4DipTable>(chip_, L2TunnelIpv4Key{local.v4Addr()});
}

VtepRows RowFinder::of(IpGenAddr const& vtep) const {
  return {.virtualPort = rowOf<TesselL3Common::VirtualPortTableMerged>(chip_, vtep),
          .overlay = overlayRow(chip_, vtep),
          .source = sourceRow(chip_, vtep),
          .destination = destination(vtep),
          .encapId = encapId(vtep),
          .copies = copies(vtep)};
}

std::vector<NeededRow> RowFinder::needed(Vane::TunnelType type, IpGenAddr const& vtep) const {
  auto rows = of(vtep);
  std::vector<NeededRow> needed{std::move(rows.virtualPort)};
  if (hasOverlay(type)) needed.push_back(std::move(rows.overlay));
  if (!hasOverlay(type) && rows.copies.empty()) needed.push_back(copyRow({}, vtep));
  if (!hasOverlay(type)) {
    for (auto& copy : rows.copies) needed.push_back(std::move(copy.row));
  }
  bool const fromEvpn = type == Vane::vxlanHerTunnel_ && evpn_ && evpn_->evpnEnabled() && !maps_->dataPathLearning();
  if (type == Vane::vxlanTunnel_ || fromEvpn) needed.push_back(std::move(rows.source));
  needed.push_back(std::move(rows.destination));
  return needed;
}

}  // namespace Host
