#include <gtest/gtest.h>

#include <bitset>
#include <limits>

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Exceptions.h"
#include "platform/meshal/Bounded.h"
#include "platform/tessel/values/FinalNextHopSet.h"
#include "platform/tessel/values/L3Keys.h"
#include "platform/tessel/values/MemberTunnelUniqueNhId.h"
#include "platform/tessel/values/TunnelType.h"
#include "platform/tessel/values/VtepList.h"
#include "platform/tessel/values/VxlanTunnelKey.h"
#include "platform/vane/Ids.h"
#include "platform/vane/NextHopEntry.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"
#include "platform/vxlan/Vni.h"

namespace {

using Meshal::EthAddr;
using Meshal::IntfId;
using Meshal::IpGenAddr;
using Vane::NextHopEntry;
using Vane::TunnelKey;

/// The text of the range exception that `make` throws, "" when it throws none.
template <class Make>
std::string refusal(Make make) {
  try {
    make();
  } catch (Kiln::RangeException const& exception) {
    return exception.what();
  }
  return "";
}

template <class T>
std::string refusalOf(std::int64_t number) {
  return refusal([&] { T{number}; });
}

/// `refused` on both sides of the range, both ends accepted, the low end the default.
template <class T>
void expectRange(std::int64_t min, std::int64_t max, std::string const& refused) {
  EXPECT_EQ(refusalOf<T>(min), "");
  EXPECT_EQ(refusalOf<T>(max), "");
  EXPECT_EQ(refusalOf<T>(min - 1), refused);
  EXPECT_EQ(refusalOf<T>(max + 1), refused);
  EXPECT_EQ(refusalOf<T>(max + 1 + (std::int64_t{1} << 32)), refused);
  EXPECT_EQ(T{}.value(), min);
  EXPECT_EQ(T::max, max);
}

TEST(RangeInt, refusesInTheWordsOfTheType) {
  expectRange<U2>(0, 3, "U2::value < 0 or > 0x03 not allowed");
  expectRange<U4>(0, 15, "U4::value < 0 or > 0x0f not allowed");
  expectRange<U7>(0, 127, "U7::value < 0 or > 0x7f not allowed");
  expectRange<U24>(0, 0xffffff, "U24::value < 0 or > 0x00ffffff not allowed");
  expectRange<Bridging::VlanId>(1, 4094, "Bridging::VlanId::value < 1 or > 4094 not allowed");
  expectRange<Bridging::VlanIdOrNone>(0, 4094, "Bridging::VlanIdOrNone::value > 4094 not allowed");
  std::string const vniRefusal = "Vxlan::VniExt::value < Vxlan::VniExt::min or > Vxlan::VniExt::max not allowed";
  expectRange<Vxlan::VniExt>(1, 0xffffff, vniRefusal);
  EXPECT_EQ(refusal([] { Vxlan::VniExtOrNone{0u}; }), vniRefusal);
  EXPECT_TRUE(Vxlan::VniExtOrNone(0xFFFFFFFF).isNone());
  EXPECT_EQ(Vxlan::VniExtOrNone(), Vxlan::VniExtOrNone::none());
}

TEST(Exceptions, ofMutatorsNameTheMutator) {
  EXPECT_THROW(Kiln::throwMutatorArgNullPointerException("Dir::entryIs"), Kiln::NullPointerException);
  EXPECT_THROW(Kiln::Impl::throwMutatorReinstantiating("Dir::table"), Kiln::ReinstantiationException);
}

TEST(VaneIds, onlyTheUnsetIdIsInvalid) {
  EXPECT_FALSE(Vane::VaneTunnelId().valid());
  EXPECT_EQ(Vane::VaneTunnelId(), Vane::VaneTunnelId::invalidTunnelId());
  EXPECT_TRUE(Vane::VaneTunnelId::unprogrammed().valid());
  EXPECT_EQ(Vane::VaneNextHopId(), Vane::VaneNextHopId::invalidNextHopId());
  EXPECT_TRUE(Vane::VaneNextHopId(0).valid());
  EXPECT_EQ(Kiln::fromText<Vane::VaneTunnelId>("4294967294"), Vane::VaneTunnelId::unprogrammed());
  EXPECT_EQ(Kiln::fromText<Vane::VaneTunnelId>("4294967296"), std::nullopt);
}

/// Whether `value` has `text` and `text` reads as `value` again.
template <class T>
void expectText(T const& value, std::string const& text) {
  EXPECT_EQ(Kiln::toText(value), text);
  T read{};
  EXPECT_TRUE(Kiln::readText(text, read)) << text;
  EXPECT_EQ(read, value);
  EXPECT_EQ(hash_value(read), hash_value(value));
}

TEST(Keys, textReadsBack) {
  IpGenAddr const one("10.0.0.1");
  IpGenAddr const two("2001:db8::2");
  expectText(TunnelKey{}, ", dst:, vrf:0, genId:0, intfId:");
  expectText(TunnelKey{one, two, 4294967295u, std::numeric_limits<std::uint64_t>::max(), IntfId("up, dst:1")},
             "10.0.0.1, dst:2001:db8::2, vrf:4294967295, genId:18446744073709551615, intfId:up, dst:1");
  expectText(TesselL3Common::VxlanTunnelKey(IntfId("Vxlan1"), one, 4789, true, 65535, 1),
             "Vxlan1, srcIp:10.0.0.1, udpDestPort:4789, udpSrcPortValid:true, udpSrcPort:65535, ttl:1");
  expectText(TesselL3Common::L3NextHop2Key{EthAddr(0x020000000001u), IntfId("up 1")}, "02:00:00:00:00:01 up 1");
  expectText(TesselL3Common::L3NextHop2Key{EthAddr(0xffffffffffffu), IntfId()}, "ff:ff:ff:ff:ff:ff");
  expectText(TesselL3Common::L3AdjIdKey::l3Underlay(36), "adj:36");
  expectText(TesselL3Common::L3AdjIdKey(36), "other:36");
  expectText(TesselL3Common::L3AdjIdKey::l3Underlay(2147483684u), "adj:2147483684");
  expectText(TesselL3Common::L3IpmcKey{1, 10}, "1, vlanId:10");
  expectText(TesselL3Common::EgrL3TunnelKey{one, IpGenAddr("10.0.0.2")}, "10.0.0.1 > 10.0.0.2");
  expectText(TesselL3Common::EgrL3Ipv6TunnelKey{IpGenAddr(), two}, " > 2001:db8::2");
  expectText(Vxlan::VniExtOrNone(), "none");
  expectText(Vane::VaneNextHopId(7), "7");
}

TEST(Keys, brokenTextsAreRefusedAndChangeNothing) {
  TunnelKey key{IpGenAddr("10.0.0.1"), {}, 1, 2, {}};
  auto const before = key;
  for (auto const* text : {"", "10.0.0.1", "10.0.0.1, dst:10.0.0.2, vrf:1, genId:1",
                           ", dst:x, vrf:0, genId:0, intfId:", ", dst:, vrf:-1, genId:0, intfId:",
                           ", dst:, vrf:4294967296, genId:0, intfId:", ", vrf:0, dst:, genId:0, intfId:"}) {
    EXPECT_FALSE(Kiln::readText(text, key)) << text;
  }
  EXPECT_EQ(key, before);
  using namespace TesselL3Common;
  EXPECT_FALSE(Kiln::fromText<VxlanTunnelKey>(
      "Vxlan1, srcIp:10.0.0.1, udpDestPort:4789, udpSrcPortValid:true, udpSrcPort:1, ttl:65"));
  EXPECT_FALSE(Kiln::fromText<L3AdjIdKey>("adj:4294967296"));
  EXPECT_FALSE(Kiln::fromText<L3AdjIdKey>("36"));
  EXPECT_FALSE(Kiln::fromText<EgrL3TunnelKey>("10.0.0.1"));
  EXPECT_FALSE(Kiln::fromText<L3IpmcKey>("256, vlanId:1"));
}

TEST(TunnelKey, everyMemberTellsKeysApart) {
  TunnelKey const base{IpGenAddr("10.0.0.1"), IpGenAddr("10.0.0.2"), 1, 5, IntfId("Vxlan1")};
  std::vector<TunnelKey> larger(5, base);
  larger[0].srcIs(IpGenAddr("10.0.0.2"));
  larger[1].dstIs(IpGenAddr("10.0.0.3"));
  larger[2].vrfIs(2);
  larger[3].genIdIs(6);
  larger[4].intfIdIs(IntfId("later than Vxlan1"));
  for (auto const& key : larger) {
    EXPECT_NE(key, base);
    EXPECT_LT(base, key);
    EXPECT_NE(hash_value(key), hash_value(base));
  }
}

TEST(TunnelKey, hashesOfConsecutiveTunnelsSpread) {
  std::bitset<1 << 15> low;
  for (std::uint32_t i = 0; i < 24576; ++i) {
    TunnelKey key;
    key.dstIs(Meshal::IpAddr(0x0a000001 + i));
    low.set(Kiln::Hash<TunnelKey>{}(key)&0x7fff);
  }
  EXPECT_GT(low.count(), 16500u);  // at random: about 17 290
}

TEST(TunnelType, lowBitsTellUnicastAndMemberTunnels) {
  std::string matching;
  for (auto const type : {Vane::vxlanTunnel_, Vane::vxlanHerTunnel_, Vane::vxlanMemberTunnel_, Vane::vxlanMcastTunnel_,
                          Vane::vxlanMcastHer_, Vane::vxlanBum_}) {
    if ((type & 0xf7) == 1) matching += Kiln::toText(type) + " ";
  }
  EXPECT_EQ(matching, "vxlanTunnel vxlanMemberTunnel ");
}

TEST(VxlanTunnelKey, refusesTtlOutsideItsRange) {
  auto const withTtl = [](std::uint8_t ttl) {
    return refusal([&] { TesselL3Common::VxlanTunnelKey(IntfId(), IpGenAddr(), 0, false, 0, ttl); });
  };
  EXPECT_EQ(withTtl(0), "TesselL3Common::VxlanTunnelKey::ttl < 1 or > 64 not allowed");
  EXPECT_EQ(withTtl(65), "TesselL3Common::VxlanTunnelKey::ttl < 1 or > 64 not allowed");
  EXPECT_EQ(withTtl(1), "");
  EXPECT_EQ(withTtl(64), "");
}

TEST(NextHopEntry, defaultsAndText) {
  NextHopEntry entry;
  entry.addrIs(IpGenAddr("10.0.0.9"));
  entry.typeIs(static_cast<Vane::NextHopEntryType>(77));
  EXPECT_EQ(entry.stringValue(),
            "{type=77,addr=10.0.0.9,ethAddr=00:00:00:00:00:00,l2Intf=,l3Intf=,encapValue=16777215,labelValue=1048576}");
  EXPECT_EQ(testing::PrintToString(NextHopEntry().type()), "nextHopResolved");
  NextHopEntry other = entry;
  other.labelValueIs(0);
  EXPECT_LT(other, entry);
  EXPECT_NE(hash_value(other), hash_value(entry));
}

TEST(FinalNextHopSet, keepsEachEntryOnceInOrder) {
  TesselVxlan::FinalNextHopSet set;
  auto const hop = [](std::uint32_t n) { return NextHopEntry{Vane::nextHopResolved, Meshal::IpAddr(n)}; };
  for (auto const n : {5u, 3u, 9u, 3u, 1u, 7u, 5u}) set.nextHopIs(hop(n));
  set.nextHopDel(hop(7));
  set.nextHopDel(hop(8));
  std::string order;
  for (auto const& entry : set.nextHop()) order += Kiln::toText(entry.addr()) + " ";
  EXPECT_EQ(order, "0.0.0.1 0.0.0.3 0.0.0.5 0.0.0.9 ");
  EXPECT_TRUE(set.nextHopHas(hop(5)));
  EXPECT_FALSE(set.nextHopHas(hop(7)));

  auto copy = set;
  EXPECT_EQ(copy, set);
  copy.nextHopIs(hop(10));
  EXPECT_LT(set, copy);
  copy.nextHopDelAll();
  EXPECT_EQ(Kiln::toText(copy), "[]");
  EXPECT_EQ(refusal([] { (void)TesselVxlan::FinalNextHopSet::fromString("x"); }),
            "No String constructor for FinalNextHopSet - has collection");
}

TEST(VtepList, holdsTunnelsByKey) {
  TesselVxlan::VtepList list;
  TunnelKey first;
  TunnelKey second;
  second.genIdIs(1);
  list.tunnelKeyListIs(second);
  list.tunnelKeyListIs(first);
  list.tunnelKeyListIs(first);
  EXPECT_EQ(Kiln::toText(list), "[, dst:, vrf:0, genId:0, intfId:, , dst:, vrf:0, genId:1, intfId:]");
  list.tunnelKeyListDel(first);
  EXPECT_FALSE(list.tunnelKeyListHas(first));
  EXPECT_TRUE(list.tunnelKeyListHas(second));
  list.tunnelKeyListDelAll();
  EXPECT_TRUE(list.tunnelKeyList().empty());
}

TEST(MemberTunnelUniqueNhId, isEqualByBothNumbers) {
  using TesselCentral::MemberTunnelUniqueNhId;
  EXPECT_TRUE(MemberTunnelUniqueNhId::isEq({}, {0, 0}));
  EXPECT_FALSE(MemberTunnelUniqueNhId::isEq({1, 2}, {2, 1}));
  EXPECT_NE(hash_value(MemberTunnelUniqueNhId{1, 2}), hash_value(MemberTunnelUniqueNhId{2, 1}));
  EXPECT_EQ(Kiln::toText(MemberTunnelUniqueNhId{1, 2}), "{adjId=1,uniqueNhId=2}");
}

}  // namespace
