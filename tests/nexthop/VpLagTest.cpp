// Groups of virtual ports, as their programmer alone writes them.

#include "TesselVxlan/nexthop/VpLagEcmpCascadeProgrammer.h"
#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using TesselVxlan::VxlanVtepGroupTunnelIdMap;
using Vane::VXLAN::VaneVtepGroupKey;

class VpLag : public Tunnels {
 protected:
  void SetUp() override {
    Tunnels::SetUp();
    for (unsigned const n : {2, 3}) agent.tunnel(unicast, vtep(n)).via(uplink(1));
  }
  auto insert(std::set<unsigned> const& members) {
    auto const config = Dovel::make<Vane::VXLAN::VaneVtepGroupConfig>(seven);
    for (auto const n : members) config->vtepListIs(Meshal::IpGenAddr(vtep(n)), true);
    auto handle = programmer().insertEntry(config, seven);
    agent.settle();
    return handle;
  }
  TesselVxlan::VpLagEcmpProgrammer& programmer() const { return *wrapper().vpLagEcmpProgrammer(); }
  Dovel::Ptr<VxlanVtepGroupTunnelIdMap> map() const { return wrapper().vtepGrpTnlIdMapDir()->vtepGrpTnlIdMapIs(seven); }

  VaneVtepGroupKey const seven{7U};
};
INSTANTIATE_TEST_SUITE_P(Chips, VpLag, testing::ValuesIn(chipKinds({"cascaded"})), kindName);

TEST_P(VpLag, statusIsWrittenBeforeTheId) {
  std::string seen;
  Support::Watch const watch(*map(), [&](Dovel::Change const& change) {
    if (change.id != VxlanVtepGroupTunnelIdMap::hwTunnelIdId) return;
    seen += Kiln::toText(map()->tnlIdEntryStatus()) + ' ' + Kiln::toText(map()->hwTunnelId()) + ' ';
  });
  EXPECT_TRUE(insert({2, 3}));
  EXPECT_EQ(insert({2, 9}), nullptr) << "one has no tunnel: the group stays";
  agent.writes();
  EXPECT_TRUE(insert({2, 3}));
  EXPECT_EQ(agent.writes(), "");
  agent.hardware().refuseTable("VpLagGroupTable", Asic::EntryState::full);
  insert({2});
  agent.hardware().refuseNone();
  EXPECT_TRUE(insert({3}));
  agent.tunnel(flood, vtep(4)).withoutRoute();
  EXPECT_EQ(insert({4}), nullptr);
  EXPECT_EQ(agent.table("VpLagGroupTable"), "");
  EXPECT_EQ(seen, "entryWriteDone 0 entryWriteFailed 4294967294 entryWriteDone 0 entryWriteDone 4294967294 ");
}

TEST_P(VpLag, groupWithoutAMapIsWrittenAndNotPublished) {
  insert({2});
  EXPECT_EQ(agent.row("VpLagGroupTable", "7"), "memberBlockHandle=VpLagEcmpMember0Table[[10.255.0.2, adj:101]]");
  agent.tunnel(flood, vtep(4)).withoutRoute();
  EXPECT_EQ(insert({4}), nullptr);
  agent.hold("VpLagGroupTable");
  auto const former = map();
  Kiln::TraceCapture const trace("VpLagEcmpCascadeProgrammer");
  insert({2});
  EXPECT_EQ(former->hwTunnelId().valid(), GetParam().completion == Asic::Completion::direct) << "at once or later";
  wrapper().vtepGrpTnlIdMapDir()->vtepGrpTnlIdMapDel(seven);
  agent.release();
  insert({3});
  EXPECT_TRUE(trace.contains(" VP-LAG tnlId not found for vtepGrpId 7"));
  programmer().deleteEntry(seven);
  EXPECT_EQ(agent.table("VpLagGroupTable") + agent.table("VpLagEcmpMember0Table"), "");
  programmer().deleteEntry(seven);
}

TEST_P(VpLag, tablesOfOtherProgrammersAreMadeOnce) {
  auto const rows = agent.chip();
  Kiln::TraceCapture const trace("VpLagEcmpCascadeProgrammer");
  programmer().initTables(wrapper().chipInfo());
  EXPECT_TRUE(trace.contains(" Virtual Port table already initialized"));
  EXPECT_TRUE(trace.contains(" ecmpGroup1Table and ecmpMember1Table tables already initialized "));
  EXPECT_EQ(agent.chip(), rows);
  auto const cascade = Dovel::cast<TesselVxlan::VpLagEcmpCascadeProgrammer>(wrapper().vpLagEcmpProgrammer());
  EXPECT_EQ(cascade->chipInfo().stage(), Asic::BringupStage(0x6b));
  EXPECT_EQ(cascade->virtualPortTable(), wrapper().virtualPortTableProgrammer()->virtualPortTable());
  EXPECT_EQ(cascade->ecmpGroup1Table(), wrapper().underlayEcmpProgrammer()->ecmpGroup1Table());
  insert({2});
  programmer().initTables(wrapper().chipInfo());
  EXPECT_EQ(agent.chip(), rows) << "its own begin empty";
}

}  // namespace AgentTest
