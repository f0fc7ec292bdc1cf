#include <functional>

#include "tests/support/TunnelFixture.h"

namespace AgentTest {

namespace {

using testing::HasSubstr;
using testing::Not;

/// Events after which chip and status must be those of a fresh start with the final configuration.
struct Sequence {
  char const* name;
  std::function<void(AgentWorld&)> run;
};

AgentWorld& mlagVtep(AgentWorld& agent, std::string const& addr) {
  auto wish = agent.wish();
  wish.mlagVtep = addr;
  return agent.want(wish);
}

std::vector<Sequence> sequences() {
  return {
      {"a generation without a header is removed",
       [](AgentWorld& agent) {
         agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
         agent.udpPort(0);
         agent.tunnel(unicast, vtep(2)).generation(6);
         agent.tunnel(unicast, vtep(2)).gone();
         agent.udpPort(4789);
         agent.tunnel(unicast, vtep(3)).via(uplink(1));
       }},
      {"a removed tunnel returns with a former generation",
       [](AgentWorld& agent) {
         agent.tunnel(member, vtep(2)).via(uplink(1));
         agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
         agent.udpPort(0);
         agent.tunnel(unicast, vtep(2)).generation(6);
         agent.tunnel(unicast, vtep(2)).gone();
         agent.udpPort(4789);
         agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
       }},
      {"a generation gets its status before its header",
       [](AgentWorld& agent) {
         agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
         agent.udpPort(0).localVtep(vtep(8));
         agent.tunnel(unicast, vtep(2)).generation(6);
         agent.adjacency(101, {uplink(1), uplink(2)}).learning(true).vti(false).udpPort(4789).vti(true);
       }},
      {"both types wait for a port while next hops and addresses change",
       [](AgentWorld& agent) {
         agent.udpPort(0);
         for (unsigned n = 2; n <= 4; ++n) {
           agent.tunnel(n == 3 ? member : unicast, vtep(n)).via(uplink(1));
           agent.tunnel(n == 3 ? unicast : member, vtep(n)).via(uplink(1));
         }
         agent.tunnel(unicast, vtep6(2)).via(uplink(1));
         agent.localVtep(vtep6(1)).adjacency(101, {uplink(2)}).vti(false).udpPort(4789);
         agent.vti(true).localVtep("").localVtep(vtep(1)).localVtep(vtep6(1));
       }},
      {"another source within one generation",
       [](AgentWorld& agent) {
         agent.tunnel(unicast, vtep(2)).via(uplink(1)).generation(5);
         agent.agent().wantedTunnels(unicast)->tunnel(Meshal::IpGenAddr(vtep(2)))->vrfIs(7);
         agent.settle();
       }},
      {"settings reach IPv6 tunnels of an IPv4 MLAG address",
       [](AgentWorld& agent) {
         mlagVtep(agent, vtep(9)).tunnel(unicast, vtep6(2)).via(uplink(1));
         agent.learning(true).tos(3).udpPort(4790);
       }},
      {"an IPv6 tunnel gets an MLAG address and loses it",
       [](AgentWorld& agent) {
         agent.localVtep(vtep6(1)).tunnel(unicast, vtep6(2)).via(uplink(1));
         mlagVtep(agent, vtep(9)).tos(3).learning(true);
         mlagVtep(agent, "").tos(4);
       }},
      {"types of one VTEP agree on the MLAG address",
       [](AgentWorld& agent) {
         mlagVtep(agent, vtep(9));
         agent.tunnel(unicast, vtep(2)).via(uplink(1));
         agent.tunnel(member, vtep(2)).via(uplink(1));
         agent.tunnel(member, vtep(3)).via(uplink(1));
         agent.tunnel(unicast, vtep(3)).via(uplink(1));
         agent.tos(3).udpPort(4790);
       }},
  };
}

class Sequences : public Tunnels {};
INSTANTIATE_TEST_SUITE_P(Chips, Sequences, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(Sequences, endAsAFreshStart) {
  for (auto const& sequence : sequences()) {
    SCOPED_TRACE(sequence.name);
    AgentWorld world(GetParam());
    world.together([](AgentWorld& a) { a.localVtep(vtep(1)).udpPort(4789); });
    sequence.run(world);
    AgentWorld fresh(GetParam());
    fresh.want(world.wish());
    EXPECT_EQ(world.chip(), fresh.chip());
    EXPECT_EQ(world.statusByKey(), fresh.statusByKey());
  }
}

// A pass rewrites the headers of both families and ends where an address is missing: a tunnel behind that one in the
// list keeps its header until the family has an address again.
TEST_P(Sequences, aHeaderPassEndsAtAFamilyWithoutAnAddress) {
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

// What a removed generation replaced stays wanted, and is programmed by the next pass over the headers.
TEST_P(Sequences, aReplacedGenerationReturnsWithTheNextPass) {
  configure(unicast, key(vtep(2), 5));
  configure(unicast, key(vtep(2), 6));
  dismiss(unicast, key(vtep(2), 6));
  EXPECT_EQ(agent.status(unicast), "");
  agent.tos(1);
  EXPECT_THAT(agent.status(unicast), HasSubstr("10.255.0.2 gen=5 "));
  dismiss(unicast, key(vtep(2), 5));
}

TEST_P(Sequences, aGenerationThatWaitsIsTakenUpWithItsNextHops) {
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

TEST_P(Sequences, aNewGenerationWritesWhatTheChipRefused) {
  auto const hops = list(7, {1, 2});
  auto const* const overlay = cascaded() ? "IngL3EcmpMember0Table" : "IngL3NextHop1";
  // The last: a port's success publishes the failure of the overlay entry, which is written nevertheless.
  for (auto const& tables : std::vector<std::vector<char const*>>{{"VirtualPort1Table"},
                                                                  {overlay},
                                                                  {"EcmpGroup1Table"},
                                                                  {"EgrL3NextHop2"},
                                                                  {"EgrL3Ipv4TunnelTable"},
                                                                  {"VirtualPort1Table", overlay}}) {
    SCOPED_TRACE(tables.front());
    for (auto const* table : tables) agent.hardware().refuseTable(table, Asic::EntryState::failed);
    configure(unicast, key(vtep(2), 1), hops);
    agent.hardware().refuseNone();
    configure(unicast, key(vtep(2), 2), hops);
    dismiss(unicast, key(vtep(2), 1));
    EXPECT_THAT(agent.status(unicast), Not(HasSubstr("unprogrammed")));
    for (auto const& store : agent.agent().chip().stores()) {
      store->forEachEntry([&](Asic::EntryView const& entry) {
        EXPECT_EQ(entry.state(), Asic::EntryState::written) << store->name() << ' ' << entry.key();
      });
    }
    dismiss(unicast, key(vtep(2), 2));
  }
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(Sequences, nothingIsRememberedOfAVtepThatHasLeft) {
  auto const failing = [this](auto&& change) {
    agent.hardware().refuseTable(cascaded() ? "IngL3EcmpMember0Table" : "IngL3NextHop1", Asic::EntryState::failed);
    change();
    agent.hardware().refuseNone();
  };
  // The id changes: to none that is one, and to another row.
  failing([this] { configure(unicast, key(vtep(2), 1), list(7, {1})); });
  EXPECT_EQ(remembered(unicast), "");
  configure(unicast, key(vtep(2), 2), list(8, {2}));
  EXPECT_THAT(remembered(unicast), HasSubstr("10.255.0.2 by id"));
  failing([this] { configure(unicast, key(vtep(2), 3), list(9, {3})); });
  EXPECT_THAT(remembered(unicast), Not(HasSubstr("by id")));
  for (unsigned genId = 1; genId <= 3; ++genId) dismiss(unicast, key(vtep(2), genId));
  EXPECT_EQ(remembered(unicast), "");
  // A member tunnel keeps the record, and removes it.
  configure(member, key(vtep(2), 1), list(7, {1}));
  configure(unicast, key(vtep(2), 1), list(8, {2}));
  agent.hold(agent.overlayTable());
  config(unicast).hwTunnelConfigList(key(vtep(2), 1))->nextHopEntryListIs(list(9, {3}));
  agent.settle();
  dismiss(unicast, key(vtep(2), 1));
  agent.release();
  EXPECT_EQ(remembered(unicast), "");
  dismiss(member, key(vtep(2), 1));
  EXPECT_EQ(remembered(unicast) + remembered(member), "");
  EXPECT_EQ(agent.chip(), start);
}

TEST_P(Sequences, anActiveIdIsFoundUntilItEnds) {
  configure(unicast, key(vtep(2), 1), list(7, {1}));
  configure(member, key(vtep(2), 1), list(7, {1}));
  auto const nhId = map(vtep(2))->nhId();
  config(unicast).activeNextHopIdListIs(nhId, true);
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_THAT(agent.table("L2TunnelIpv4SipTable"), HasSubstr(vtep(2)));
  config(unicast).activeNextHopIdListDel(nhId);
  EXPECT_EQ(agent.table("L2TunnelIpv4SipTable"), "");
  EXPECT_EQ(remembered(unicast), "");
  dismiss(member, key(vtep(2), 1));
}

}  // namespace

}  // namespace AgentTest
