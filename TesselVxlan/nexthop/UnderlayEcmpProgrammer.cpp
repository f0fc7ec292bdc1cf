#include "TesselVxlan/nexthop/UnderlayEcmpProgrammer.h"

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("UnderlayEcmpProgrammer");

namespace TesselVxlan {

using TesselL3Common::L3AdjIdKey;
using TesselL3Tunnel::EcmpGroup1Table;

UnderlayEcmpProgrammer::UnderlayEcmpProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                                               Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                                               Dovel::Ptr<NextHopTableProgrammer> nextHopTableProgrammer)
    : NextHopTableProgrammerBase(std::move(statewayEm), std::move(fcsd)),
      nextHopTableProgrammer_(std::move(nextHopTableProgrammer)) {}

void UnderlayEcmpProgrammer::initTables(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "Underlay ecmp tables");
  INVARIANT(fcsd()->logicalModInfos());
  ecmpGroup1TableIs(mountPath()->createEntity<EcmpGroup1Table>("underlay"));
  Asic::bringUp(*ecmpGroup1Table(), statewayEm(), chipInfo);
  INVARIANT(ecmpGroup1Table()->entrys() == 0);
  ecmpMember1TableIs(ecmpMember1TableFactory());
  Asic::bringUp(*ecmpMember1Table(), statewayEm(), chipInfo);
  INVARIANT(ecmpMember1Table()->entryBlocks() == 0);
}

NextHopTableProgrammerBase::Handle UnderlayEcmpProgrammer::insertEntry(
    Dovel::Ptr<Vane::HwTunnelConfigEntry const> const& tunnelConfigEntry) {
  auto const groupKey = L3AdjIdKey::l3Underlay(tunnelConfigEntry->nextHopEntryList()->adjId());
  TRACE(1, " group key {}, tunnel key {}", groupKey, tunnelConfigEntry->tunnelKey());
  if (!ecmpGroup1Table() || !ecmpMember1Table()) {
    TRACE(1, " No ecmp tables for group key {}", groupKey);
    return {};
  }
  // All tunnels over an adjacency share its group: only the first looks at each next hop.
  auto& groups = *ecmpGroup1Table();
  auto const& list = *tunnelConfigEntry->nextHopEntryList();
  auto handle = cachedGroup(groupKey, list);
  if (!handle) {
    // Of the time before: next hops that are written or refused below are looked at once more.
    auto const revision = nextHopTableProgrammer()->revision();
    EcmpGroup1Table::Entry entry;
    std::uint16_t members = 0;
    entry.memberBlockHandle = memberBlock(*tunnelConfigEntry, members);
    if (!entry.memberBlockHandle) return {};
    entry.lastMemberIndex = static_cast<std::uint16_t>(members - 1);
    cache(groupKey, {list.nextHopEntry(), list.serial(), revision});
    if (!isEq(entry, groups.entry(groupKey)) || isRefused(groups, groupKey)) {
      handle = groups.entryRef(groupKey, entry);
      INVARIANT(handle);
      return handle;
    }
    handle = groups.entryWeakRef(groupKey);
  }
  TRACE(1, " Ecmp group already exists for group key= {}", groupKey);
  return handle;
}

NextHopTableProgrammerBase::Handle UnderlayEcmpProgrammer::cachedGroup(L3AdjIdKey const& groupKey,
                                                                       Vane::NextHopEntryList const& list) const {
  if (nextHopTableProgrammer()->vxlanUnderlayFloodingHw()) return {};
  auto const found = cached_.find(groupKey);
  if (found == cached_.end()) return {};
  auto const& [nextHops, serial, revision] = found->second;
  if (revision != nextHopTableProgrammer()->revision()) return {};
  if (serial != list.serial() && nextHops != list.nextHopEntry()) return {};
  auto group = ecmpGroup1Table()->entryWeakRef(groupKey);
  if (!group || group->state() == EntryState::failed) return {};
  auto const& block = ecmpGroup1Table()->entry(groupKey).memberBlockHandle;
  return block && block->state() != EntryState::failed ? group : nullptr;
}

void UnderlayEcmpProgrammer::cache(L3AdjIdKey const& groupKey, Cached&& cached) {
  // Freed groups send no notification, so bound the cache.
  constexpr std::size_t spare = 64;
  if (cached_.size() > 2 * ecmpGroup1Table()->entrys() + spare) cached_.clear();
  cached_[groupKey] = std::move(cached);
}

NextHopTableProgrammerBase::Handle UnderlayEcmpProgrammer::memberBlock(
    Vane::HwTunnelConfigEntry const& tunnelConfigEntry, std::uint16_t& entryNum) {
  EcmpMember1Table::EntryBlock block;
  for (auto const& nextHopEntry : tunnelConfigEntry.nextHopEntryList()->nextHopEntry()) {
    if (nextHopEntry.type() != Vane::nextHopResolved) continue;
    EcmpMember1Table::Entry member;
    member.nextHopHandle = nextHopTableProgrammer()->insertEntry(tunnelConfigEntry.tunnelKey(), nextHopEntry);
    if (!member.nextHopHandle) return {};
    block.entryIs(entryNum++, member);
  }
  INVARIANT(entryNum >= 1);
  auto const groupKey = L3AdjIdKey::l3Underlay(tunnelConfigEntry.nextHopEntryList()->adjId());
  auto ecmpBlockHandle = ecmpMember1Table()->entryBlockRef(block, ecmpGroup1Table()->entry(groupKey).memberBlockHandle);
  INVARIANT(ecmpBlockHandle);
  return ecmpBlockHandle;
}

}  // namespace TesselVxlan
