#include <gmock/gmock.h>

#include <limits>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Json.h"
#include "platform/meshal/Bounded.h"
#include "platform/tessel/values/L3Keys.h"
#include "platform/tessel/values/MemberTunnelUniqueNhId.h"
#include "platform/tessel/values/VxlanTunnelKey.h"
#include "platform/vane/Ids.h"
#include "platform/vane/NextHopEntry.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"
#include "platform/vane/VaneTunnel.h"
#include "platform/vxlan/Vni.h"
#include "tests/support/Cases.h"

KILN_VALUE_CODEC(std::int8_t, "i8")

namespace ValuesTest {

using namespace TesselL3Common;
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

/// `refused` on both sides of the range, both ends accepted, the low end the default.
template <class T>
void expectRange(std::int64_t min, std::int64_t max, std::string const& refused) {
  for (auto const number : {min - 1, min, max, max + 1, max + 1 + (std::int64_t{1} << 32)})
    EXPECT_EQ(refusal([&] { T{number}; }), number < min || number > max ? refused : "");
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
  std::string const vni = "Vxlan::VniExt::value < Vxlan::VniExt::min or > Vxlan::VniExt::max not allowed";
  expectRange<Vxlan::VniExt>(1, 0xffffff, vni);
  EXPECT_EQ(refusal([] { Vxlan::VniExtOrNone{0u}; }), vni);
  EXPECT_EQ(Vxlan::VniExtOrNone(0xFFFFFFFF), Vxlan::VniExtOrNone());
  for (auto const& [ttl, refused] :
       std::vector<std::pair<std::uint8_t, bool>>{{0, true}, {1, false}, {64, false}, {65, true}})
    EXPECT_EQ(refusal([&, value = ttl] { VxlanTunnelKey(IntfId(), IpGenAddr(), 0, false, 0, value); }),
              refused ? "TesselL3Common::VxlanTunnelKey::ttl < 1 or > 64 not allowed" : "");
}

/// Expects that `value` has `text` and that `text` reads as `value` again.
template <class T>
void expectText(T const& value, std::string const& text) {
  EXPECT_EQ(Kiln::toText(value), text);
  T read{};
  EXPECT_TRUE(Kiln::readText(text, read)) << text;
  EXPECT_EQ(read, value);
  EXPECT_EQ(hash_value(read), hash_value(value));
}

TEST(Keys, textReadsBack) {
  IpGenAddr const one("10.0.0.1"), two("2001:db8::2");
  expectText(TunnelKey{}, ", dst:, vrf:0, genId:0, intfId:");
  expectText(TunnelKey{one, two, 4294967295u, std::numeric_limits<std::uint64_t>::max(), IntfId("up, dst:1")},
             "10.0.0.1, dst:2001:db8::2, vrf:4294967295, genId:18446744073709551615, intfId:up, dst:1");
  expectText(VxlanTunnelKey(IntfId("Vxlan1"), one, 4789, true, 65535, 1),
             "Vxlan1, srcIp:10.0.0.1, udpDestPort:4789, udpSrcPortValid:true, udpSrcPort:65535, ttl:1");
  expectText(L3NextHop2Key{EthAddr(0x020000000001u), IntfId("up 1")}, "02:00:00:00:00:01 up 1");
  expectText(L3NextHop2Key{EthAddr(0xffffffffffffu), IntfId()}, "ff:ff:ff:ff:ff:ff");
  expectText(L3AdjIdKey::l3Underlay(36), "adj:36");
  expectText(L3AdjIdKey(36), "other:36");
  expectText(L3AdjIdKey::l3Underlay(2147483684u), "adj:2147483684");
  expectText(L3IpmcKey{1, 10}, "1, vlanId:10");
  expectText(EgrL3TunnelKey{one, IpGenAddr("10.0.0.2")}, "10.0.0.1 > 10.0.0.2");
  expectText(EgrL3Ipv6TunnelKey{IpGenAddr(), two}, " > 2001:db8::2");
  expectText(Vxlan::VniExtOrNone(), "none");
  expectText(Vane::VaneTunnelId::unprogrammed(), "4294967294");
  for (auto const* text : {"36", "none"})
    EXPECT_EQ(Kiln::toText(Kiln::fromText<Vane::AdjIdOrNone>(text).value()), text);
}

struct Outer {
  std::set<Bridging::VlanId> vlans;
  std::vector<NextHopEntry> hops;
};
BOOST_DESCRIBE_STRUCT(Outer, (), (vlans, hops))
KILN_VALUE_OPS(Outer)

/// What a codec makes of a document: the value written again, or "place: found value, expected …" and an unchanged
/// value.
std::string through(Kiln::ValueCodec const& codec, std::string const& json) {
  std::unique_ptr<void, void (*)(void*)> const value(codec.make(nullptr), codec.drop);
  auto const written = [&] { return Kiln::jsonText([&](Kiln::JsonOut place) { codec.toJson(value.get(), place); }); };
  auto const before = written();
  try {
    codec.fromJson(value.get(), Kiln::JsonDocument::parse(json, "").root());
  } catch (Kiln::InputError const& error) {
    EXPECT_EQ(written(), before);
    return error.place() + ": found " + error.value() + ", " + error.problem();
  }
  return written();
}

template <class... T>
std::map<std::string, Kiln::ValueCodec> codecsOf() {
  return {{std::string(Kiln::codecOf<T>().typeName), Kiln::codecOf<T>()}...};
}

TEST(ValueJson, isReadAndWrittenOrRefusedWithItsPlace) {
  auto codecs = codecsOf<bool, std::int8_t, std::uint16_t, std::uint64_t, std::string, Bridging::VlanId, U24,
                         Vxlan::VniExtOrNone, Vane::VaneTunnelId, Vane::AdjIdOrNone, Vane::TunnelType,
                         Vane::NextHopEntryType, NextHopEntry, TesselCentral::MemberTunnelUniqueNhId, TunnelKey,
                         VxlanTunnelKey, L3AdjIdKey, EgrL3TunnelKey, L3IpmcKey>();
  codecs.emplace("Outer", Kiln::JsonImpl::makeCodec<Outer>("Outer"));
  for (auto const& [given, result] : Support::cases("kiln/values.txt")) {
    auto const blank = given[0].find(' ');
    EXPECT_EQ("= " + through(codecs.at(given[0].substr(0, blank)), given[0].substr(blank + 1)) + '\n', result)
        << given[0];
  }
}

}  // namespace ValuesTest
