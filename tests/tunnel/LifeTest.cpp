#include "tests/support/TunnelFixture.h"

namespace AgentTest {

namespace {

using testing::HasSubstr;

class TunnelLife : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, TunnelLife, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(TunnelLife, aStatusTellsIdsOnlyWhenTheChipHasThem) {
  agent.hold(agent.overlayTable());
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  agent.tunnel(member, vtep(3)).via(uplink(1));
  EXPECT_EQ(agent.status(unicast), "") << "the next-hop id is missing";
  EXPECT_EQ(agent.status(member), "10.255.0.3 gen=1 tnl=#1 nh=#1 adj=101\n")
      << "a member tunnel has no other than the port's";
  agent.release();
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=1 tnl=#2 nh=#1 adj=101\n");

  agent.hold("VirtualPortTableMerged");
  agent.tunnel(unicast, vtep(4)).via(uplink(1));
  bool const direct = GetParam().completion == Asic::Completion::direct;
  EXPECT_EQ(agent.status(unicast).find("10.255.0.4") != std::string::npos, direct);
  agent.release();
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.4 gen=1 tnl=#3 nh=#2 adj=101\n"));
}

TEST_P(TunnelLife, aNewerGenerationTakesOver) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
  agent.tunnel(member, vtep(3)).via(uplink(1)).generation(5);
  auto const before = agent.chip();
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=5 tnl=#1 nh=#1 adj=101\n");
  agent.tunnel(unicast, vtep(2)).generation(7);
  agent.tunnel(member, vtep(3)).generation(7);
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=7 tnl=#1 nh=#1 adj=101\n");
  EXPECT_EQ(agent.status(member), "10.255.0.3 gen=7 tnl=#2 nh=#2 adj=101\n");
  agent.tunnel(unicast, vtep(2)).generation(3);
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=3 tnl=#1 nh=#1 adj=101\n") << "an earlier one too ends programmed";
  EXPECT_FALSE(map(vtep(2))->oldTnlKeyHas(unicast));
  EXPECT_EQ(agent.chip(), before);
}

TEST_P(TunnelLife, lateEventsOfAnOldGenerationChangeNothing) {
  configure(unicast, key(vtep(2), 5));
  configure(unicast, key(vtep(2), 6));
  auto const before = agent.chip();
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=6 tnl=#1 nh=#1\n") << "one status, of the newer";
  Kiln::TraceCapture trace("HwTunnelProgrammerBase");
  dismiss(unicast, key(vtep(2), 5));
  EXPECT_TRUE(trace.contains(" Skipping due to rcvdGenId : 5 < tnlIdMapGenId : 6"));
  configure(unicast, key(vtep(2), 4));
  EXPECT_TRUE(trace.contains("Bailing out with doTunnelCreateCommon"));
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=6 tnl=#1 nh=#1\n");
  EXPECT_EQ(agent.chip(), before);
  dismiss(unicast, key(vtep(2), 4));
  dismiss(unicast, key(vtep(2), 6));
  EXPECT_EQ(agent.status(unicast), "");
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(TunnelLife, theOldStatusStandsUntilTheNewOneDoes) {
  configure(unicast, key(vtep(2), 1));
  auto const status = agent.status(unicast);
  agent.localVtep("");
  configure(unicast, key(vtep(2), 2));
  EXPECT_EQ(agent.status(unicast), status) << "without a local VTEP the generation is not taken up";
  // The deletion of the generation in force takes the tunnel; the one that waits comes with the address.
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_EQ(agent.status(unicast), "");
  agent.localVtep(vtep(1));
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.2 gen=2 "));
}

TEST_P(TunnelLife, theStatusOfAGenerationThatWasReplacedTwiceGoes) {
  configure(unicast, key(vtep(2), 5));
  agent.udpPort(0);
  configure(unicast, key(vtep(2), 6));
  configure(unicast, key(vtep(2), 7));
  dismiss(unicast, key(vtep(2), 5));
  dismiss(unicast, key(vtep(2), 6));
  agent.udpPort(4789);
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=7 tnl=#1 nh=#1\n");
}

TEST_P(TunnelLife, aVtepWithoutAFamilyGetsNothing) {
  auto wish = agent.wish();
  wish.mlagVtep = vtep(9);
  agent.want(wish);
  auto const before = agent.chip();
  configure(unicast, key("", 1));
  EXPECT_EQ(agent.status(unicast), "");
  EXPECT_EQ(agent.chip(), before);
  agent.localVtep(vtep(8)).learning(true);
  dismiss(unicast, key("", 1));
}

TEST_P(TunnelLife, typesShareTheVtep) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
  auto const alone = agent.chip();
  agent.tunnel(member, vtep(2)).via(uplink(3));
  EXPECT_EQ(agent.status(unicast), "10.255.0.2 gen=1 tnl=#1 nh=#1 adj=101\n");
  EXPECT_EQ(agent.status(member), "10.255.0.2 gen=1 tnl=#1 nh=#1 adj=102\n");
  EXPECT_EQ(agent.chip(), alone) << "the unicast tunnel's entry is not the member tunnel's to write";
  agent.tunnel(unicast, vtep(2)).gone();
  EXPECT_EQ(agent.status(unicast), "");
  EXPECT_EQ(agent.status(member), "10.255.0.2 gen=1 tnl=#1 nh=#1 adj=102\n");
  EXPECT_EQ(agent.row("L2TunnelIpv4SipTable", vtep(2)), "absent");
  agent.tunnel(member, vtep(2)).via(uplink(4));
  EXPECT_THAT(overlay(vtep(2)), HasSubstr(cascaded() ? "EcmpGroup1Table[adj:103]" : "[02:00:00:00:00:04 Vlan104]"));
  agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
  EXPECT_THAT(overlay(vtep(2)), HasSubstr("EcmpGroup1Table[adj:101] ecmp=1")) << "it takes the entry over";
}

TEST_P(TunnelLife, aMemberTunnelsUniqueIdFollowsItsAdjacencyAlone) {
  auto const unique = [this] { return map(vtep(2))->mbrTnlUniqueNhId().uniqueNhId(); };
  agent.tunnel(member, vtep(2)).via(uplink(1));
  EXPECT_EQ(unique(), 1);
  agent.tunnel(member, vtep(3)).via(uplink(1));
  agent.adjacency(101, {uplink(1), uplink(2)}).learning(true);
  EXPECT_EQ(unique(), 1);
  agent.tunnel(member, vtep(2)).via(uplink(3));
  EXPECT_EQ(unique(), 3) << "2 is the other tunnel's";
  agent.tunnel(member, vtep(2)).over(101);
  EXPECT_EQ(unique(), 4) << "never given out twice";
  configure(member, key(vtep(4), 1), list(0, {1}));
  EXPECT_EQ(map(vtep(4))->mbrTnlUniqueNhId().uniqueNhId(), 5) << "adjacency 0 has one too";
}

TEST_P(TunnelLife, aLaterLogicalChipLeavesTheTables) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1), uplink(2));
  auto const before = agent.chip();
  auto const& fcsd = agent.agent().world().fcsd;
  fcsd->logicalFapIs(LogicalFap::LogicalFapId(1), fcsd->logicalFap(LogicalFap::LogicalFapId(0)));
  EXPECT_EQ(agent.chip(), before);
  fcsd->logicalFapDel(LogicalFap::LogicalFapId(1));
  agent.tunnel(unicast, vtep(3)).via(uplink(1));
  EXPECT_THAT(overlay(vtep(3)), HasSubstr("EcmpGroup1Table[adj:102]"));
}

TEST_P(TunnelLife, aReplacedRecordIsWatched) {
  configure(member, key(vtep(2), 1));
  auto const former = map(vtep(2));
  auto const record = Dovel::make<TesselCentral::VtepIpToTnlIdNhIdMap>(former->vtepIp());
  record->tnlKeysIs(member, key(vtep(2), 1));
  record->tnlIdEntryStatusIs(TesselCentral::entryWriteDone);
  record->tnlIdIs(Vane::VaneTunnelId(77));
  auto const status = agent.agent().hwTunnelStatus(member)->tunnelStatus(key(vtep(2), 1));
  auto const& records = programmer(member).vxlanToL2State();
  records->vtepIpToTnlIdNhIdMapIs(record);
  EXPECT_EQ(status->hwTunnelId().value(), 77);
  records->vtepIpToTnlIdNhIdMapIs(former);
  dismiss(member, key(vtep(2), 1));
}

TEST_P(TunnelLife, theDeletionOfWhatWasNeverRecordedRemovesItsStatus) {
  // The status of a former process, and one of a generation that a newer, waiting one takes along.
  agent.localVtep("");
  configure(unicast, key(vtep(2), 1));
  agent.agent().hwTunnelStatus(unicast)->tunnelStatusIs(key(vtep(2), 1));
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_EQ(agent.status(unicast), "");
  agent.localVtep(vtep(1));
  configure(unicast, key(vtep(2), 5));
  agent.localVtep("");
  configure(unicast, key(vtep(2), 7));
  dismiss(unicast, key(vtep(2), 7));
  EXPECT_EQ(agent.status(unicast), "");
  dismiss(unicast, key(vtep(2), 5));
  agent.localVtep(vtep(1));
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(TunnelLife, nextHopsOfATunnelThatIsNotRecordedWait) {
  configure(member, key(vtep(2), 1), list(7, {1, 2}));
  agent.localVtep("");
  configure(unicast, key(vtep(2), 1), list(7, {1, 2}));
  auto const before = agent.chip();
  config(unicast).hwTunnelConfigList(key(vtep(2), 1))->nextHopEntryListIs(list(8, {3}));
  EXPECT_EQ(agent.chip(), before);
  agent.localVtep(vtep(1));
  EXPECT_THAT(overlay(vtep(2)), HasSubstr("adj:8"));
  dismiss(unicast, key(vtep(2), 1));
  dismiss(member, key(vtep(2), 1));
}

TEST_P(TunnelLife, headersHaveTheTtlOfTheState) {
  programmer(unicast).vxlanState()->ttlIs(17);
  agent.tunnel(unicast, vtep(2)).via(uplink(1));
  EXPECT_THAT(header(vtep(2)), HasSubstr("ttl=17"));
}

TEST_P(TunnelLife, theHandshakeEchoesCounters) {
  auto const config = agent.agent().hwTunnelConfig(unicast);
  auto const status = agent.agent().hwTunnelStatus(unicast);
  EXPECT_EQ(status->hwInit(), 1);
  config->hwInitIs(5);
  config->hwCleanupIs(3);
  EXPECT_EQ(status->hwInit(), 5);
  EXPECT_EQ(status->hwCleanup(), 3);
  EXPECT_EQ(agent.agent().hwTunnelStatus(member)->hwInit(), 1);
}

}  // namespace

}  // namespace AgentTest
