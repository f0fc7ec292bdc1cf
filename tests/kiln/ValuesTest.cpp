#include <gmock/gmock.h>

#include <limits>
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
  EXPECT_FALSE(Kiln::fromText<VxlanTunnelKey>(
      "Vxlan1, srcIp:10.0.0.1, udpDestPort:4789, udpSrcPortValid:true, udpSrcPort:1, ttl:65"));
  EXPECT_FALSE(Kiln::fromText<L3AdjIdKey>("adj:4294967296"));
  EXPECT_FALSE(Kiln::fromText<L3AdjIdKey>("36"));
  EXPECT_FALSE(Kiln::fromText<EgrL3TunnelKey>("10.0.0.1"));
  EXPECT_FALSE(Kiln::fromText<L3IpmcKey>("256, vlanId:1"));
  EXPECT_FALSE(Kiln::fromText<Vane::VaneTunnelId>("4294967296"));
  EXPECT_FALSE(Kiln::fromText<Vane::AdjIdOrNone>("x"));
  for (auto const* text : {"36", "none"})
    EXPECT_EQ(Kiln::toText(Kiln::fromText<Vane::AdjIdOrNone>(text).value()), text);
}

struct Outer {
  std::set<Bridging::VlanId> vlans;
  std::vector<NextHopEntry> hops;
};
BOOST_DESCRIBE_STRUCT(Outer, (), (vlans, hops))
KILN_VALUE_OPS(Outer)

/// What a codec makes of a document: the value written again, or "path value: expected …" and an unchanged value.
std::string through(Kiln::ValueCodec const& codec, void* value, std::string_view json) {
  auto const written = [&] { return Kiln::jsonText([&](Kiln::JsonOut place) { codec.toJson(value, place); }); };
  auto const before = written();
  try {
    codec.fromJson(value, Kiln::JsonDocument::parse(json, "").root());
  } catch (Kiln::InputError const& error) {
    EXPECT_EQ(written(), before);
    return error.place() + " " + error.value() + ": " + error.problem();
  }
  return written();
}

template <class T>
std::string through(std::string_view json) {
  T value{};
  return through(Kiln::codecOf<T>(), &value, json);
}

template <>
std::string through<Outer>(std::string_view json) {
  Outer value;
  return through(Kiln::JsonImpl::makeCodec<Outer>("Outer"), &value, json);
}

TEST(ValueJson, isReadAndWrittenOrRefusedWithItsPlace) {
  struct Case {
    std::string (*through)(std::string_view);
    std::string json, result = json;
  };
  std::string const below65536 = ": expected a whole number from 0 to 65535";
  std::string const tunnelKey = R"("10.0.0.1, dst:10.0.0.2, vrf:1, genId:18446744073709551615, intfId:Vxlan1")";
  for (auto const& [through, json, result] : std::vector<Case>{
           {through<bool>, "1", " 1: expected true or false"},
           {through<std::uint64_t>, "18446744073709551615"},
           {through<std::uint16_t>, "65536", " 65536" + below65536},
           {through<std::uint16_t>, "1.5", " 1.5" + below65536},
           {through<std::uint16_t>, "\"7\"", " \"7\"" + below65536},
           {through<std::int8_t>, "-128"},
           {through<std::int8_t>, "127"},
           {through<std::int8_t>, "-129", " -129: expected a whole number from -128 to 127"},
           {through<std::int8_t>, "128", " 128: expected a whole number from -128 to 127"},
           {through<std::string>, "7", " 7: expected a string"},
           {through<Bridging::VlanId>, "\"10\"", "10"},
           {through<Bridging::VlanId>, "65537", " 65537: expected a whole number from 1 to 4094"},
           {through<U24>, "-1", " -1: expected a whole number from 0 to 16777215"},
           {through<Vxlan::VniExtOrNone>, "\"none\""},
           {through<Vxlan::VniExtOrNone>, "4294967295", "\"none\""},
           {through<Vxlan::VniExtOrNone>, "0", " 0: expected a whole number from 1 to 16777215, or \"none\""},
           {through<Vane::VaneTunnelId>, "4294967296", " 4294967296: expected an id, a whole number of 32 bits"},
           {through<Vane::AdjIdOrNone>, "4294967295"},
           {through<Vane::AdjIdOrNone>, "null"},
           {through<Vane::TunnelType>, "9", "\"vxlanMemberTunnel\""},
           {through<Vane::TunnelType>, "2",
            " 2: expected one of vxlanTunnel vxlanHerTunnel vxlanMemberTunnel vxlanMcastTunnel vxlanMcastHer vxlanBum"},
           {through<Vane::NextHopEntryType>, "12", "\"nextHopMcastTunnel\""},
           {through<Vane::NextHopEntryType>, "77"},
           {through<NextHopEntry>, "{}",
            R"({"type":"nextHopResolved","addr":"","ethAddr":"00:00:00:00:00:00","l2Intf":"","l3Intf":"",)"
            R"("encapValue":16777215,"labelValue":1048576})"},
           {through<NextHopEntry>,
            R"({"type":200,"addr":"10.0.0.9","ethAddr":"00:00:00:00:00:00","l2Intf":"","l3Intf":"Vlan7",)"
            R"("encapValue":0,"labelValue":1048576})"},
           {through<NextHopEntry>, R"({"ethaddr":"02:00:00:00:00:01"})",
            "/ethaddr \"02:00:00:00:00:01\": unknown member, expected one of type addr ethAddr l2Intf l3Intf "
            "encapValue labelValue"},
           {through<NextHopEntry>, R"({"addr":"10.0.0"})",
            "/addr \"10.0.0\": expected an IPv4 or IPv6 address, or an empty string"},
           {through<NextHopEntry>, R"({"addr":"10.0.0.1","labelValue":-1})",
            "/labelValue -1: expected a whole number from 0 to 4294967295"},
           {through<NextHopEntry>, "[]", " []: expected an object"},
           {through<TesselCentral::MemberTunnelUniqueNhId>, R"({"uniqueNhId":7})", R"({"adjId":0,"uniqueNhId":7})"},
           {through<TunnelKey>, tunnelKey},
           {through<Outer>, R"({"vlans":[20,10,20],"hops":[]})", R"({"vlans":[10,20],"hops":[]})"},
           {through<Outer>, R"({"hops":[{},{"l2Intf":false}]})",
            "/hops/1/l2Intf false: expected the name of an interface"},
       }) {
    EXPECT_EQ(through(json), result);
  }
  EXPECT_THAT(through<Vane::NextHopEntryType>("256"), testing::HasSubstr("expected one of nextHopUnknown"));
}

}  // namespace ValuesTest
