#include <functional>
#include <optional>

#include "tests/support/TunnelFixture.h"
#include "tests/support/Watch.h"

namespace AgentTest {

using testing::HasSubstr;
using testing::Not;

class TunnelLife : public Tunnels {
 protected:
  /// Acts at each next-hop id of unicast statuses.
  void atNextHopId(std::function<void()> act) {
    auto const status = agent.agent().hwTunnelStatus(unicast);
    statuses_.emplace(*status, [this, status, act = std::move(act)](Dovel::Change const&) {
      auto const entry = status->tunnelStatus(key(vtep(2), 1));
      if (!entry) return entry_.reset();
      entry_.emplace(*entry, [act](Dovel::Change const& change) {
        if (change.id == Vane::HwTunnelStatusEntry::hwNextHopStatusEntryId) act();
      });
    });
  }

 private:
  std::optional<Support::Watch> statuses_, entry_;
};
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

TEST_P(TunnelLife, aStatusIsRemovedAfterItsTablesOrItsSuccessor) {
  for (auto const type : {unicast, member}) {
    auto const status = agent.agent().hwTunnelStatus(type);
    std::string seen;
    Support::Watch const look(*status, [&](Dovel::Change const& change) {
      if (status->tunnelStatus(change.keyAs<Vane::TunnelKey>())) return;
      seen += agent.status(type) + overlay(vtep(2)) + agent.row("VirtualPortTableMerged", vtep(2));
    });
    configure(type, key(vtep(2), 1), list(7, {1, 2}));
    configure(type, key(vtep(2), 2), list(7, {1, 2}));
    EXPECT_THAT(std::exchange(seen, ""), HasSubstr("gen=2 tnl=#1 nh=#1 adj=7\n"));
    dismiss(type, key(vtep(2), 1));
    dismiss(type, key(vtep(2), 2));
    EXPECT_EQ(seen, "absentabsent");
  }
}

TEST_P(TunnelLife, anIdMayBecomeActiveOnItsStatus) {
  atNextHopId([this] { config(unicast).activeNextHopIdListIs(map(vtep(2))->nhId(), true); });
  configure(unicast, key(vtep(2), 1), list(7, {1, 2}));
  EXPECT_THAT(agent.table("L2TunnelIpv4SipTable"), HasSubstr(vtep(2)));
  config(unicast).activeNextHopIdListDel(map(vtep(2))->nhId());
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(TunnelLife, aGenerationMayGetAnotherSource) {
  agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
  auto const before = agent.whole();
  agent.agent().wantedTunnels(unicast)->tunnel(Meshal::IpGenAddr(vtep(2)))->vrfIs(7);
  agent.settle();
  EXPECT_EQ(agent.whole(), before);
}

// A pass rewrites the headers of both families and ends where an address is missing: a tunnel behind that one in the
// list keeps its header until the family has an address again.
TEST_P(TunnelLife, aHeaderPassEndsAtAFamilyWithoutAnAddress) {
  agent.localVtep(vtep6(1));
  agent.tunnel(unicast, vtep6(2)).via(uplink(1));
  for (unsigned n = 3; n <= 8; ++n) agent.tunnel(unicast, vtep(n)).via(uplink(1));
  auto wish = agent.wish();
  wish.localVtep6.clear();
  agent.want(wish).localVtep(vtep(9));
  bool ended = false;
  for (auto const& entry : config(unicast).hwTunnelConfigListColl()) {
    auto const& remote = entry->tunnelKey().dst();
    ended = ended || remote.isIpv6();
    if (remote.isIpv6()) continue;
    auto const local = Meshal::IpGenAddr(vtep(ended ? 1 : 9));
    EXPECT_NE(header(Kiln::toText(remote), Kiln::toText(local)), "absent") << Kiln::toText(remote);
  }
  agent.localVtep(vtep6(1));
  for (unsigned n = 3; n <= 8; ++n) EXPECT_NE(header(vtep(n), vtep(9)), "absent") << n;
}

// The record still has the tunnel's own address then: only the port tells which one the header has.
TEST_P(TunnelLife, anIpv6TunnelGetsAnMlagAddressAndLosesIt) {
  agent.localVtep(vtep6(1)).tunnel(unicast, vtep6(2)).via(uplink(1));
  auto const before = agent.whole();
  auto wish = agent.wish();
  wish.mlagVtep = vtep(9);
  agent.want(wish).tos(3);
  EXPECT_THAT(agent.row("VirtualPortTableMerged", vtep6(2)), HasSubstr("[10.255.0.9 > fd00::2]"));
  wish.mlagVtep.clear();
  agent.want(wish).tos(4).tos(0);
  EXPECT_EQ(agent.whole(), before);
}

// What a removed generation replaced stays wanted, and is programmed by the next pass over the headers.
TEST_P(TunnelLife, aReplacedGenerationReturnsWithTheNextPass) {
  configure(unicast, key(vtep(2), 5));
  configure(unicast, key(vtep(2), 6));
  dismiss(unicast, key(vtep(2), 6));
  EXPECT_EQ(agent.status(unicast), "");
  agent.tos(1);
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.2 gen=5 "));
  dismiss(unicast, key(vtep(2), 5));
}

TEST_P(TunnelLife, aGenerationThatWaitsIsTakenUpWithItsNextHops) {
  configure(unicast, key(vtep(2), 5), list(7, {1}));
  agent.localVtep("");
  configure(unicast, key(vtep(2), 6), list(7, {1}));
  config(unicast).hwTunnelConfigList(key(vtep(2), 6))->nextHopEntryListIs(list(8, {2}));
  agent.settle();
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.2 gen=6 tnl=#1 nh=#1 adj=8\n"));
  dismiss(unicast, key(vtep(2), 5));
  agent.localVtep(vtep(1));
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.2 gen=6 tnl=#1 nh=#1 adj=8\n"));
  dismiss(unicast, key(vtep(2), 6));
  EXPECT_EQ(agent.chip(), start);
}

// The port is refused, too: its success publishes the failure of the overlay entry, which is written nevertheless.
TEST_P(TunnelLife, aNewGenerationWritesWhatTheChipRefused) {
  auto const* const overlay = cascaded() ? "IngL3EcmpMember0Table" : "IngL3NextHop1";
  for (auto const* const table : {overlay, "EcmpGroup1Table", "EgrL3NextHop2", "EgrL3Ipv4TunnelTable"}) {
    for (auto const* const refused : {"VirtualPort1Table", table})
      agent.hardware().refuseTable(refused, Asic::EntryState::failed);
    configure(unicast, key(vtep(2), 1), list(7, {1, 2}));
    agent.hardware().refuseNone();
    configure(unicast, key(vtep(2), 2), list(7, {1, 2}));
    EXPECT_THAT(agent.status(unicast), Not(HasSubstr("gen=2 tnl=#1 nh=unprogrammed"))) << table;
    for (auto const genId : {1, 2}) dismiss(unicast, key(vtep(2), genId));
  }
}

TEST_P(TunnelLife, anActiveIdIsFoundUntilItEnds) {
  configure(unicast, key(vtep(2), 1), list(7, {1}));
  configure(member, key(vtep(2), 1), list(7, {1}));
  auto const nhId = map(vtep(2))->nhId();
  config(unicast).activeNextHopIdListIs(nhId, true);
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_THAT(agent.table("L2TunnelIpv4SipTable"), HasSubstr(vtep(2)));
  config(unicast).activeNextHopIdListDel(nhId);
  EXPECT_EQ(agent.table("L2TunnelIpv4SipTable"), "");
  EXPECT_TRUE(programmer(unicast).nhIdToVtepIpMapColl().empty());
  dismiss(member, key(vtep(2), 1));
}

TEST_P(TunnelLife, anActiveNextHopKeepsThePortThatItsPacketsGoTo) {
  configure(unicast, key(vtep(2), 1));
  auto const first = map(vtep(2))->nhId();
  config(unicast).activeNextHopIdListIs(first, true);
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_THAT(agent.table("VirtualPortTableMerged"), HasSubstr("(10.255.0.2):"));
  configure(unicast, key(vtep(2), 1));
  auto const second = map(vtep(2))->nhId();
  config(unicast).activeNextHopIdListDel(first);
  config(unicast).activeNextHopIdListIs(second, true);
  EXPECT_THAT(agent.table("VirtualPortTableMerged"), Not(HasSubstr("(10.255.0.2):")));
  EXPECT_THAT(agent.table("L2TunnelIpv4SipTable"), HasSubstr("svpHandle=VirtualPortTableMerged[10.255.0.2]"));
  config(unicast).activeNextHopIdListDel(second);
  dismiss(unicast, key(vtep(2), 1));
  agent.settle();
  EXPECT_EQ(agent.chip(), start);
}

}  // namespace AgentTest
