#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <fstream>
#include <iterator>
#include <string>

#include "platform/kiln/Dir.h"
#include "platform/kiln/Json.h"
#include "platform/tessel/LogMessages.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/tessel/qos/TrustStatus.h"
#include "platform/vane/HwTunnel.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vxlan/VxlanConfig.h"
#include "tests/support/Watch.h"

namespace {

using Meshal::IntfId;
using Meshal::IpGenAddr;

void apply(Kiln::Entity& entity, std::string const& json) {
  auto const document = Kiln::JsonDocument::parse(json, "");
  Kiln::entityCheck(entity, document.root());
  Kiln::entityFromJson(entity, document.root());
}

Vane::NextHopEntry nextHop(std::uint8_t n) {
  Vane::NextHopEntry entry;
  entry.addrIs(IpGenAddr(Meshal::IpAddr(0x0a000000U + n)));
  entry.l3IntfIs(IntfId("Ethernet" + std::to_string(n)));
  return entry;
}

/// Counts the changes of an object.
struct Counter {
  int count = 0;
  Support::Watch watch;
  explicit Counter(Dovel::Node const& node) : watch(node, [this](Dovel::Change const&) { ++count; }) {}
};

TEST(Records, wantedTunnelsAreReadFromADocument) {
  auto const config = Dovel::make<Vane::VaneTunnelConfig>();
  apply(*config, R"({"adjacency":{"36":{"nextHops":[{"addr":"10.0.0.2"},{"addr":"10.0.0.1"}]}},
                     "tunnel":{"10.255.0.2":{"adjId":36},"2001:db8::2":{"adjId":null,"intfId":"Vxlan2"}}})");
  EXPECT_EQ(config->adjacency(36)->nextHops().begin()->addr(), IpGenAddr("10.0.0.1"));
  auto const tunnel = config->tunnel(IpGenAddr("10.255.0.2"));
  EXPECT_EQ(tunnel->adjId(), Vane::AdjIdOrNone(36));
  EXPECT_EQ(tunnel->intfId(), IntfId("Vxlan1"));
  EXPECT_EQ(config->tunnel(IpGenAddr("2001:db8::2"))->intfId(), IntfId("Vxlan2"));
  // Leaving the route out takes it away and keeps the tunnel.
  Counter changes(*tunnel);
  apply(*config, R"({"tunnel":{"10.255.0.2":{"adjId":36}}})");
  EXPECT_EQ(changes.count, 0);
  apply(*config, R"({"tunnel":{"10.255.0.2":{"adjId":null}}})");
  EXPECT_EQ(changes.count, 1);
  EXPECT_EQ(tunnel->adjId(), Vane::AdjIdOrNone());
}

TEST(Records, nextHopSetsAreEqualInAnyOrder) {
  Vane::NextHopEntrySet const a{nextHop(1), nextHop(2), nextHop(3)};
  Vane::NextHopEntrySet b{nextHop(3), nextHop(1), nextHop(2), nextHop(1)};
  EXPECT_EQ(a, b);
  EXPECT_TRUE(b.erase(nextHop(2)) && !b.erase(nextHop(2)));
  EXPECT_NE(a, b);
  EXPECT_TRUE(b.contains(nextHop(3)) && !b.contains(nextHop(2)));
  EXPECT_TRUE(b.insert(nextHop(2)) && !b.insert(nextHop(2)));
}

TEST(Records, theStatusOfANextHopIsOneUnit) {
  auto const status = Dovel::make<Vane::HwTunnelStatusEntry>(Vane::TunnelKey{});
  auto const one = Dovel::make<Vane::NextHopEntryList>(1, Vane::NextHopEntrySet{nextHop(1)});
  auto const same = Dovel::make<Vane::NextHopEntryList>(1, Vane::NextHopEntrySet{nextHop(1)});
  Counter changes(*status);
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(5), one});
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(5), one});
  EXPECT_EQ(changes.count, 1);
  // Another list is another status even if it reads the same: the id stands for the list itself.
  status->hwNextHopStatusEntryIs({Vane::VaneNextHopId(5), same});
  EXPECT_EQ(changes.count, 2);
  EXPECT_EQ(Kiln::toText(status->hwNextHopStatusEntry()), "{hwNextHopId=5,adjId=1}");
  auto const json = Kiln::jsonText([&](Kiln::JsonOut out) { Kiln::entityToJson(*status, out); });
  EXPECT_THAT(json, testing::HasSubstr(R"("hwNextHopStatusEntry":{"hwNextHopId":5)"));
  EXPECT_THROW(apply(*status, R"({"hwNextHopStatusEntry":{}})"), Kiln::InputError);
}

TEST(Records, aVtepKeepsOneLocalAddressPerFamily) {
  auto const map = Dovel::make<TesselCentral::VtepIpToTnlIdNhIdMap>(IpGenAddr("10.255.0.2"));
  map->setLocalVtep(IpGenAddr("10.255.0.1"));
  map->setLocalVtep(IpGenAddr("2001:db8::1"));
  EXPECT_EQ(map->getLocalVtep(Meshal::AddressFamily::ipv4), IpGenAddr("10.255.0.1"));
  EXPECT_EQ(map->getLocalVtep(Meshal::AddressFamily::ipv6), IpGenAddr("2001:db8::1"));
  EXPECT_DEATH(map->setLocalVtep(IpGenAddr()), "Invalid AddressFamily type");
  EXPECT_DEATH(map->getLocalVtep(Meshal::AddressFamily::unknown), "Invalid AddressFamily type");
}

TEST(Records, floodVtepsArePublishedWhole) {
  auto const dir = Dovel::make<TesselL3Common::TesselVxlanBumVtepConfigDir>();
  TesselL3Common::EncapId published;
  Support::Watch const watch(*dir,
                             [&](Dovel::Change const&) { published = (*dir->bumVtepConfigColl().begin())->encapId(); });
  auto const config = dir->bumVtepConfigIs(IpGenAddr("10.255.0.2"), TesselL3Common::EncapId(4097));
  EXPECT_EQ(published.value(), 4097);
  Counter changes(*config);
  auto const hop = config->nextHopsIs(IntfId("Ethernet1"), IpGenAddr("10.0.0.1"), Meshal::EthAddr(1));
  EXPECT_EQ(config->nextHopsIs(IntfId("Ethernet1"), IpGenAddr("10.0.0.2"), Meshal::EthAddr(1)), hop);
  EXPECT_EQ(changes.count, 1);
}

TEST(Records, theLocalTrustStatusFollowsTheFirstOfTheDirectory) {
  using TesselCommon::Qos::TrustStatus;
  auto const dir = Dovel::make<Kiln::Dir>("slice");
  auto const local = TesselCommon::Qos::trustStatusFactory("trustStatusLocal");
  auto sm = Dovel::make<TesselCommon::Qos::TrustStatusSm>(dir, local);
  auto const a = Dovel::make<TrustStatus>("a"), b = Dovel::make<TrustStatus>("b");
  b->tosBasePtrIs(2);
  dir->childIs("b", b);
  EXPECT_EQ(local->tosBasePtr(), 2);
  dir->childIs("a", a);
  a->tosBasePtrIs(1);
  a->remarkBasePtrIs(200);
  b->tosBasePtrIs(3);
  EXPECT_EQ(local->tosBasePtr(), 1);
  EXPECT_EQ(local->remarkBasePtr(), 200);
  dir->childDel("a");
  EXPECT_EQ(local->tosBasePtr(), 3);
  sm = nullptr;
  b->tosBasePtrIs(4);
  EXPECT_EQ(local->tosBasePtr(), 3);
}

// Operators and their tools search for these texts, missing blanks included. Messages without a text get it where they
// are raised.
TEST(LogMessages, areWorded) {
  std::string texts;
  for (auto const* message : TesselLog::descriptors()) {
    texts += std::string(message->name) + ' ' + std::to_string(message->severity) + '\n';
    if (message->format[0] == 0) continue;
    auto const action = message->action.code() != 0 ? std::to_string(message->action.code()) : message->action.text();
    texts += std::string(message->format) + '\n' + message->explanation + '\n' + action + '\n';
  }
  std::ifstream wanted(TESSEL_SOURCE_DIR "/tests/data/log-messages.txt");
  EXPECT_EQ(texts, std::string(std::istreambuf_iterator<char>(wanted), {}));
}

}  // namespace
