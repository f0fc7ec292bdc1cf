// When groups of VTEPs are reviewed, and what is published of them; the programmer is one of the test's own.

#include <gmock/gmock.h>

#include "TesselVxlan/overlay/TesselVxlanVtepGroupSm.h"
#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Clock.h"
#include "platform/kiln/Fmt.h"
#include "platform/kiln/Trace.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using Meshal::IpGenAddr;
using TesselVxlan::VxlanVtepGroupTunnelIdMapDir;
using Vane::VaneTunnelId;
using Vane::VXLAN::VaneVtepGroupConfigDir;
using Vane::VXLAN::VaneVtepGroupKey;
using Vane::VXLAN::VaneVtepGroupStatusDir;

/// Writes down its calls: "+7", "-7".
class RecordingProgrammer final : public TesselVxlan::VpLagEcmpProgrammer {
  KILN_TYPE(RecordingProgrammer, TesselVxlan::VpLagEcmpProgrammer)

 public:
  explicit RecordingProgrammer(Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> maps)
      : VpLagEcmpProgrammer(nullptr, nullptr, nullptr, std::move(maps)) {}

  void initTables(TesselCentral::ChipInfo const&) override {}
  Handle insertEntry(Dovel::Ptr<Vane::VXLAN::VaneVtepGroupConfig const> const&, VaneVtepGroupKey const& key) override {
    log += fmt::format("+{}", key);
    if (id.valid()) vtepGrpTnlIdMapDir()->vtepGrpTnlIdMap(key)->hwTunnelIdIs(id);
    return {};
  }
  void deleteEntry(VaneVtepGroupKey const& key) override {
    log += fmt::format("-{}{}", key, vtepGrpTnlIdMapDir()->vtepGrpTnlIdMapHas(key) ? "" : " after its map");
  }

  std::string log;
  VaneTunnelId id = VaneTunnelId::invalidTunnelId();  ///< What it writes for each group.
};
KILN_DESCRIBE(RecordingProgrammer)

class VtepGroups : public testing::Test {
 protected:
  ~VtepGroups() override {
    sm = nullptr;
    EXPECT_EQ(Kiln::activityManager()->waiting(), 0U);
  }
  void start() { sm->initializedIs(true); }
  /// What the programmer is asked for in one turn of the loop.
  std::string turn() {
    Kiln::activityManager()->runDue();
    return std::exchange(programmer->log, "");
  }
  auto member(unsigned n) { return l2->vtepIpToTnlIdNhIdMapIs(address(n)); }
  std::string published() const {
    auto const status = statuses->vaneVtepGroupStatus(seven);
    if (!status) return "none";
    for (auto const& [addr, active] : status->activeVtepListColl()) EXPECT_TRUE(active) << addr;
    EXPECT_EQ(status->hwTunnelId().value(), status->hwNextHopId().value());
    return fmt::format("{:#x} {}", status->hwTunnelId().value(),
                       fmt::join(Kiln::keysOf(status->activeVtepListColl()), " "));
  }
  std::string turnAndPublished() {
    auto const asked = turn();
    return asked + ' ' + published();
  }
  static IpGenAddr address(unsigned n) { return IpGenAddr(Meshal::IpAddr(0x0aff0000U + n)); }

  VaneVtepGroupKey const seven{7U};
  Dovel::Ptr<VaneVtepGroupConfigDir> groups = Dovel::make<VaneVtepGroupConfigDir>("groups");
  Dovel::Ptr<VaneVtepGroupStatusDir> statuses = Dovel::make<VaneVtepGroupStatusDir>("statuses");
  Dovel::Ptr<TesselCentral::VxlanToL2State> l2 = Dovel::make<TesselCentral::VxlanToL2State>("l2");
  Dovel::Ptr<VxlanVtepGroupTunnelIdMapDir> maps = TesselVxlan::vxlanVtepGroupTunnelIdMapDirFactory();
  Dovel::Ptr<RecordingProgrammer> programmer = Dovel::make<RecordingProgrammer>(maps);
  Dovel::Ptr<TesselVxlan::VxlanVtepGroupDirSm> sm = TesselVxlan::vxlanVtepGroupDirSmFactory(
      Kiln::activityManager()->clock(), nullptr, groups, statuses, l2, programmer, maps, nullptr);
};

TEST_F(VtepGroups, areReviewedOnceForABurstOfChanges) {
  auto const group = groups->vaneVtepGroupConfigIs(seven);
  group->vtepListIs(address(2), true);
  sm->handleVtepGroup();
  sm->handleVtepGroup(seven);
  groups->vaneVtepGroupConfigIs(VaneVtepGroupKey(8U));
  Kiln::TraceCapture const trace("TesselVxlanVtepGroupSm");
  groups->activeNextHopIdListIs(Vane::VaneNextHopId(5), true);
  sm->initializedIs(false);
  EXPECT_EQ(turnAndPublished(), " none") << "before the start";
  EXPECT_TRUE(trace.lines().empty());
  start();
  sm->vxlanVtepGroupSm(VaneVtepGroupKey(8U))->reviewGroup();
  EXPECT_EQ(programmer->log, "") << "later";
  EXPECT_EQ(turn(), "+7");
  EXPECT_TRUE(trace.contains(" no Vteps in list "));
  EXPECT_EQ(turn(), "");
  for (unsigned n = 1; n <= 3; ++n) group->versionIs(n);
  group->vtepListIs(address(3), true);
  member(3)->tnlIdIs(VaneTunnelId(5));
  sm->handleVtepGroup(seven);
  start();
  EXPECT_EQ(Kiln::activityManager()->waiting(), 1U);
  EXPECT_EQ(turn(), "+7");
  sm->vxlanVtepGroupSm(seven)->initializedIs(true);
  EXPECT_EQ(turn(), "");
  group->versionIs(4);
  EXPECT_EQ(turn(), "+7");
  auto const other = Dovel::make<Vane::VXLAN::VaneVtepGroupConfig>(seven);
  other->vtepListIs(address(4), true);
  groups->vaneVtepGroupConfigIs(other);
  EXPECT_EQ(turnAndPublished(), "-7+7 0xffffffff 10.255.0.4");
  group->versionIs(9);
  EXPECT_EQ(turn(), "") << "replaced by another configuration";
}

TEST_F(VtepGroups, followTheTunnelsOfTheirMembersAlone) {
  start();
  auto const group = groups->vaneVtepGroupConfigIs(seven);
  auto const before = member(2);
  for (unsigned const n : {2, 3}) group->vtepListIs(address(n), true);
  group->vtepListIs(address(3), false);
  groups->vaneVtepGroupConfigIs(VaneVtepGroupKey(8U))->vtepListIs(address(3), true);
  turn();
  before->tnlIdIs(VaneTunnelId(5));
  EXPECT_EQ(turn(), "+7");
  auto const map = member(3);
  EXPECT_EQ(turn(), "+7+8");
  map->adjIdIs(9);
  EXPECT_EQ(turn(), "+7+8");
  map->nhIdIs(Vane::VaneNextHopId(9));
  map->tnlIdEntryStatusIs(TesselCentral::entryWriteDone);
  member(4)->tnlIdIs(VaneTunnelId(6));
  l2->dataPathLearningIs(true);
  EXPECT_EQ(turn(), "");
  l2->vtepIpToTnlIdNhIdMapDel(address(3));
  EXPECT_EQ(turn(), "+7+8");
  member(3);
  group->vtepListDel(address(3));
  EXPECT_EQ(turn(), "+7+8");
  member(3)->adjIdIs(10);
  EXPECT_EQ(turn(), "+8");
  groups->vaneVtepGroupConfigDel(VaneVtepGroupKey(8U));
  member(3)->adjIdIs(11);
  before->adjIdIs(10);
  EXPECT_EQ(turn(), "-8+7");
}

TEST_F(VtepGroups, leaveNothingBehind) {
  start();
  auto const alive = Dovel::Node::aliveCount();
  for (bool const active : {true, false}) groups->vaneVtepGroupConfigIs(seven)->vtepListIs(address(2), active);
  Kiln::TraceCapture const trace("TesselVxlanVtepGroupSm");
  groups->vaneVtepGroupConfigDel(seven);
  EXPECT_EQ(maps->vtepGrpTnlIdMapHas(seven), false);
  EXPECT_EQ(turnAndPublished(), "-7 none");
  EXPECT_TRUE(trace.contains(" not present "));
  EXPECT_EQ(Dovel::Node::aliveCount(), alive);
  // A review can end the group.
  auto const again = groups->vaneVtepGroupConfigIs(seven);
  programmer->id = VaneTunnelId(5);
  Support::Watch const leave(*statuses->vaneVtepGroupStatus(seven), [&](Dovel::Change const& change) {
    if (change.id == Vane::VXLAN::VaneVtepGroupStatus::hwTunnelIdId) groups->vaneVtepGroupConfigDel(seven);
  });
  again->vtepListIs(address(2), true);
  EXPECT_EQ(turnAndPublished(), "+7-7 after its map none");
}

TEST_F(VtepGroups, publishTheirIdWithTheBitOfGroups) {
  start();
  auto const group = groups->vaneVtepGroupConfigIs(seven);
  group->vtepListIs(address(3), true);
  turn();
  auto const map = maps->vtepGrpTnlIdMap(seven);
  EXPECT_EQ(published(), "0xffffffff 10.255.0.3");
  map->hwTunnelIdIs(VaneTunnelId(5));
  EXPECT_EQ(published(), "0x8005 10.255.0.3") << "at once";
  for (unsigned const n : {4, 2}) group->vtepListIs(address(n), true);
  group->vtepListDel(address(3));
  map->hwTunnelIdIs(VaneTunnelId::unprogrammed());
  EXPECT_EQ(published(), "0xfffffffe 10.255.0.2 10.255.0.4");
  map->hwTunnelIdIs(VaneTunnelId());
  EXPECT_EQ(published(), "0xffffffff 10.255.0.2 10.255.0.4");
}

TEST_F(VtepGroups, areLeftToAnotherProcessAtTheEnd) {
  start();
  auto const group = groups->vaneVtepGroupConfigIs(seven);
  group->vtepListIs(address(2), true);
  turn();
  auto const map = maps->vtepGrpTnlIdMap(seven);
  sm->hasNotificationActiveIs(false);
  group->versionIs(1);
  member(2);
  map->hwTunnelIdIs(VaneTunnelId(5));
  EXPECT_EQ(turnAndPublished(), " 0xffffffff 10.255.0.2") << "while notification is off";
  sm->hasNotificationActiveIs(true);
  group->versionIs(2);
  sm->kilnDoZombieReactors(true);
  map->hwTunnelIdIs(VaneTunnelId(6));
  EXPECT_EQ(turnAndPublished(), " 0xffffffff 10.255.0.2") << "after the end";
  sm = nullptr;
  EXPECT_EQ(turn(), "");
}

TEST_F(VtepGroups, takeUpWhatAFormerProcessPublished) {
  for (unsigned const n : {7, 8, 9})
    statuses->vaneVtepGroupStatusIs(VaneVtepGroupKey(n))->hwTunnelIdIs(VaneTunnelId(1));
  groups->vaneVtepGroupConfigIs(seven)->vtepListIs(address(2), true);
  groups->vaneVtepGroupConfigIs(VaneVtepGroupKey(8U));
  Kiln::TraceCapture const trace("TesselVxlanVtepGroupSm");
  start();
  EXPECT_EQ(statuses->vaneVtepGroupStatus(seven)->hwTunnelId(), VaneTunnelId(1));
  EXPECT_FALSE(statuses->vaneVtepGroupStatus(VaneVtepGroupKey(8U))->hwTunnelId().valid()) << "it has no members";
  EXPECT_FALSE(statuses->vaneVtepGroupStatusHas(VaneVtepGroupKey(9U)));
  EXPECT_TRUE(trace.contains("cleanVtepGroupConfig: key: 9"));
  Vane::VaneNextHopId const inUse(0x8005);
  groups->activeNextHopIdListIs(inUse, true);
  EXPECT_TRUE(trace.contains("addActiveNextHopId:  nhid32773"));
  groups->activeNextHopIdListDel(inUse);
  EXPECT_TRUE(trace.contains(" Deleting nhId:  32773"));
}

}  // namespace AgentTest
