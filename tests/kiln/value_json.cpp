#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "platform/bridging/VlanId.h"
#include "platform/kiln/Json.h"
#include "platform/logicalfap/LogicalFapId.h"
#include "platform/meshal/Bounded.h"
#include "platform/tessel/values/EntryWriteStatus.h"
#include "platform/tessel/values/L3Keys.h"
#include "platform/tessel/values/MemberTunnelUniqueNhId.h"
#include "platform/tessel/values/VxlanTunnelKey.h"
#include "platform/vane/Ids.h"
#include "platform/vane/NextHopEntry.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"
#include "platform/vxlan/Vni.h"

namespace Kiln {
namespace {

/// What a codec makes of a document: the value written again, or "path value: expected …".
std::string through(ValueCodec const& codec, void* value, std::string_view json) {
  try {
    codec.fromJson(value, JsonDocument::parse(json, "").root());
  } catch (InputError const& error) {
    return error.place() + " " + error.value() + ": " + error.problem();
  }
  return jsonText([&](JsonOut place) { codec.toJson(value, place); });
}

template <class T>
std::string through(std::string_view json) {
  T value{};
  return through(codecOf<T>(), &value, json);
}

TEST(ValueJson, numbersKeepToTheirRange) {
  EXPECT_EQ(through<bool>("true"), "true");
  EXPECT_EQ(through<bool>("1"), " 1: expected true or false");
  EXPECT_EQ(through<std::uint8_t>("255"), "255");
  EXPECT_EQ(through<std::uint64_t>("18446744073709551615"), "18446744073709551615");
  std::string const expected = ": expected a whole number from 0 to 65535";
  for (auto const* bad : {"65536", "-1", "1.5", "18446744073709551616", "\"7\"", "null", "[7]"}) {
    EXPECT_TRUE(through<std::uint16_t>(bad).ends_with(expected)) << bad;
  }
  EXPECT_EQ(through<std::string>("\"a/b\""), "\"a/b\"");
  EXPECT_EQ(through<std::string>("7"), " 7: expected a string");
}

TEST(ValueJson, rangesAndIdsAreNumbersAndNeverThrowTheirOwnException) {
  EXPECT_EQ(through<Bridging::VlanId>("4094"), "4094");
  EXPECT_EQ(through<Bridging::VlanId>("\"10\""), "10");
  EXPECT_EQ(through<Bridging::VlanId>("4095"), " 4095: expected a whole number from 1 to 4094");
  EXPECT_EQ(through<Bridging::VlanId>("65537"), " 65537: expected a whole number from 1 to 4094");
  EXPECT_EQ(through<U24>("-1"), " -1: expected a whole number from 0 to 16777215");
  EXPECT_EQ(through<Vxlan::VniExtOrNone>("\"none\""), "\"none\"");
  EXPECT_EQ(through<Vxlan::VniExtOrNone>("4294967295"), "\"none\"");
  EXPECT_EQ(through<Vxlan::VniExtOrNone>("16777215"), "16777215");
  EXPECT_EQ(through<Vxlan::VniExtOrNone>("0"), " 0: expected a whole number from 1 to 16777215, or \"none\"");
  EXPECT_EQ(through<Vane::VaneTunnelId>("4294967295"), "4294967295");
  EXPECT_EQ(through<Vane::VaneTunnelId>("4294967296"), " 4294967296: expected an id, a whole number of 32 bits");
  EXPECT_EQ(through<LogicalFap::LogicalFapId>("3"), "3");
  EXPECT_EQ(through<TesselL3Common::EncapId>("4097"), "4097");
}

TEST(ValueJson, enumerationsAreNames) {
  EXPECT_EQ(through<Vane::TunnelType>("\"vxlanHerTunnel\""), "\"vxlanHerTunnel\"");
  EXPECT_EQ(through<Vane::TunnelType>("9"), "\"vxlanMemberTunnel\"");
  EXPECT_EQ(through<Vane::TunnelType>("2"),
            " 2: expected one of vxlanTunnel vxlanHerTunnel vxlanMemberTunnel vxlanMcastTunnel vxlanMcastHer vxlanBum");
  EXPECT_EQ(through<TesselCentral::EntryWriteStatus>("2"), "\"entryWriteFailed\"");
  EXPECT_EQ(through<Vane::NextHopEntryType>("12"), "\"nextHopMcastTunnel\"");
  EXPECT_EQ(through<Vane::NextHopEntryType>("77"), "77");
  EXPECT_NE(through<Vane::NextHopEntryType>("256").find("expected one of nextHopUnknown"), std::string::npos);
  EXPECT_NE(through<Vane::NextHopEntryType>("-1").find("expected one of nextHopUnknown"), std::string::npos);
}

TEST(ValueJson, structsAreObjectsWithDefaults) {
  EXPECT_EQ(through<Vane::NextHopEntry>("{}"),
            R"({"type":"nextHopResolved","addr":"","ethAddr":"00:00:00:00:00:00","l2Intf":"","l3Intf":"",)"
            R"("encapValue":16777215,"labelValue":1048576})");
  EXPECT_EQ(through<Vane::NextHopEntry>(R"({"type":200,"addr":"10.0.0.9","l3Intf":"Vlan7","encapValue":0})"),
            R"({"type":200,"addr":"10.0.0.9","ethAddr":"00:00:00:00:00:00","l2Intf":"","l3Intf":"Vlan7",)"
            R"("encapValue":0,"labelValue":1048576})");
  EXPECT_EQ(through<Vane::NextHopEntry>(R"({"ethaddr":"02:00:00:00:00:01"})"),
            "/ethaddr \"02:00:00:00:00:01\": unknown member, expected one of type addr ethAddr l2Intf l3Intf "
            "encapValue labelValue");
  EXPECT_EQ(through<Vane::NextHopEntry>(R"({"addr":"10.0.0"})"),
            "/addr \"10.0.0\": expected an IPv4 or IPv6 address, or an empty string");
  EXPECT_EQ(through<Vane::NextHopEntry>("[]"), " []: expected an object");
  EXPECT_EQ(through<TesselCentral::MemberTunnelUniqueNhId>(R"({"uniqueNhId":7})"), R"({"adjId":0,"uniqueNhId":7})");
}

TEST(ValueJson, keysAreTexts) {
  auto const key = R"("10.0.0.1, dst:10.0.0.2, vrf:1, genId:18446744073709551615, intfId:Vxlan1")";
  EXPECT_EQ(through<Vane::TunnelKey>(key), key);
  EXPECT_NE(through<Vane::TunnelKey>("\"10.0.0.1\"").find("expected a tunnel key"), std::string::npos);
  auto const header = R"("Vxlan1, srcIp:10.0.0.1, udpDestPort:4789, udpSrcPortValid:true, udpSrcPort:5, ttl:64")";
  EXPECT_EQ(through<TesselL3Common::VxlanTunnelKey>(header), header);
}

TEST(ValueJson, aRefusedDocumentLeavesTheValueAlone) {
  Vane::NextHopEntry entry;
  entry.encapValueIs(5);
  auto const before = entry;
  EXPECT_EQ(through(codecOf<Vane::NextHopEntry>(), &entry, R"({"addr":"10.0.0.1","labelValue":-1})"),
            "/labelValue -1: expected a whole number from 0 to 4294967295");
  EXPECT_EQ(entry, before);
}

struct Outer {
  std::set<Bridging::VlanId> vlans;
  std::vector<Vane::NextHopEntry> hops;
};
BOOST_DESCRIBE_STRUCT(Outer, (), (vlans, hops))
KILN_VALUE_OPS(Outer)

TEST(ValueJson, pathsLeadToTheElement) {
  auto const codec = JsonImpl::makeCodec<Outer>("Outer");
  Outer outer;
  EXPECT_EQ(through(codec, &outer, R"({"vlans":[20,10,20],"hops":[]})"), R"({"vlans":[10,20],"hops":[]})");
  EXPECT_EQ(through(codec, &outer, R"({"hops":[{},{"l2Intf":false}]})"),
            "/hops/1/l2Intf false: expected the name of an interface");
}

TEST(ValueCodec, textsGoBothWaysWhereTheTypeReads) {
  auto const& codec = codecOf<Vane::TunnelType>();
  EXPECT_EQ(codec.typeName, "Vane::TunnelType");
  Vane::TunnelType type{};
  EXPECT_TRUE(codec.fromText("vxlanBum_", &type));
  std::string out = "type ";
  codec.toText(&type, out);
  EXPECT_EQ(out, "type vxlanBum");
  EXPECT_FALSE(codec.fromText("vxlan", &type));
  EXPECT_EQ(type, Vane::vxlanBum_);
  EXPECT_EQ(codecOf<Vane::NextHopEntry>().fromText, nullptr);
}

}  // namespace
}  // namespace Kiln
