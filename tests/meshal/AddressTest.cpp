#include <fmt/format.h>
#include <gtest/gtest.h>

#include <bitset>
#include <set>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Fmt.h"
#include "platform/meshal/EthAddr.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"

namespace Meshal {
namespace {

IpGenAddr addr(std::string_view text) { return IpGenAddr(text); }

/// The text of what `text` reads as, "no" when it does not read.
template <class T>
std::string reread(std::string_view text) {
  auto const value = Kiln::fromText<T>(text);
  return value ? Kiln::toText(*value) : "no";
}

TEST(IpGenAddr, textReadsBackInItsCanonicalForm) {
  for (auto const* text : {"", "0.0.0.0", "10.0.0.1", "255.255.255.255", "::", "::1", "2001:db8::1",
                           "2001:db8:0:1::", "::ffff:10.0.0.1", "2001:0:0:1::1"}) {
    EXPECT_EQ(reread<IpGenAddr>(text), text);
  }
  EXPECT_EQ(reread<IpGenAddr>("2001:DB8:0:0:1:0:0:1"), "2001:db8::1:0:0:1");
  for (auto const* text : {"10.0.0", "10.0.0.256", " 10.0.0.1", "10.0.0.1 ", "2001:db8", "fe80::1%eth0", "vtep"}) {
    EXPECT_EQ(reread<IpGenAddr>(text), "no") << text;
  }
  EXPECT_EQ(reread<IpGenAddr>(std::string_view("10.0.0.1\0x", 10)), "no");
  EXPECT_EQ(reread<IpGenAddr>(std::string(300, '1')), "no");
  EXPECT_THROW(addr("10.0.0"), Kiln::RangeException);
}

TEST(IpGenAddr, theFamilyIsPartOfTheValue) {
  IpGenAddr const v4 = addr("10.0.0.1");
  IpGenAddr const v6 = v4.v6Addr();
  EXPECT_EQ(v4.bytes(), v6.bytes());
  EXPECT_NE(v4, v6);
  EXPECT_NE(hash_value(v4), hash_value(v6));
  EXPECT_LT(addr("255.255.255.255"), addr("::"));
  EXPECT_LT(IpGenAddr(), addr("0.0.0.0"));
  EXPECT_LT(addr("10.0.0.2"), addr("10.0.1.1"));
  EXPECT_LT(addr("127.0.0.1"), addr("128.0.0.1"));
}

TEST(IpGenAddr, partsOfAnAddress) {
  EXPECT_EQ(addr("10.0.0.1").v4Addr().value(), 0x0a000001u);
  EXPECT_EQ(addr("10.0.0.1").u64(0), 0x0a00000100000000u);
  EXPECT_EQ(addr("2001:db8::1:2").u64(0), 0x20010db800000000u);
  EXPECT_EQ(addr("2001:db8::1:2").u64(1), 0x10002u);
  EXPECT_EQ(addr("2001:db8:1:2:3:4:5:6").getUpper64V6Addr(), addr("2001:db8:1:2::"));
}

TEST(IpGenAddr, unspecifiedIsNoFamilyOrTheZeroAddress) {
  EXPECT_TRUE(IpGenAddr().isUnspecified());
  EXPECT_TRUE(addr("0.0.0.0").isUnspecified());
  EXPECT_TRUE(addr("::").isUnspecified());
  EXPECT_FALSE(addr("0.0.0.1").isUnspecified());
  EXPECT_FALSE(addr("::1").isUnspecified());
}

TEST(IpAddr, multicastRanges) {
  auto const kind = [](std::string_view text) {
    auto const v4 = addr(text).v4Addr();
    return std::string(v4.isMulticast() ? "multicast" : "unicast") + (v4.isReservedMulticast() ? " reserved" : "");
  };
  EXPECT_EQ(kind("223.255.255.255"), "unicast");
  EXPECT_EQ(kind("224.0.0.0"), "multicast reserved");
  EXPECT_EQ(kind("224.0.0.255"), "multicast reserved");
  EXPECT_EQ(kind("224.0.1.0"), "multicast");
  EXPECT_EQ(kind("239.255.255.255"), "multicast");
  EXPECT_EQ(kind("240.0.0.0"), "unicast");
}

TEST(EthAddr, textReadsBack) {
  EthAddr const mac(0x0200000000ffu);
  EXPECT_EQ(Kiln::toText(mac), "02:00:00:00:00:ff");
  EXPECT_EQ(mac.u64(), 0x0200000000ffu);
  EXPECT_EQ(Kiln::fromText<EthAddr>("02:00:00:00:00:FF"), mac);
  for (auto const* text : {"", "02:00:00:00:00", "02:00:00:00:00:0", "02-00-00-00-00-01", "02:00:00:00:00:0g",
                           "02:00:00:00:00:-1", "02:00:00:00:00:011"}) {
    EXPECT_EQ(reread<EthAddr>(text), "no") << text;
  }
}

TEST(IntfId, oneNameIsOneId) {
  IntfId const first("Ethernet1");
  EXPECT_EQ(IntfId::handleInitialized("Ethernet1"), first);
  EXPECT_NE(IntfId("Ethernet2"), first);
  EXPECT_EQ(first.name(), "Ethernet1");
  EXPECT_TRUE(IntfId("").empty());
  EXPECT_EQ(IntfId(""), IntfId());
  EXPECT_FALSE(first.empty());
  // The names stay good while the table grows.
  for (int i = 0; i < 5000; ++i) IntfId("grow" + std::to_string(i));
  EXPECT_EQ(IntfId("Ethernet1"), first);
  EXPECT_EQ(first.name(), "Ethernet1");
}

TEST(IntfId, aVlanInterfaceBearsItsNumber) {
  for (int const vlan : {1, 10, 4094}) {
    auto const name = "Vlan" + std::to_string(vlan);
    IntfId const intf(name);
    ASSERT_TRUE(VlanIntfId::isVlanIntfId(intf)) << name;
    EXPECT_EQ(VlanIntfId::vlanId(intf), vlan);
    EXPECT_EQ(static_cast<int>(intf.id() & 0xffff), vlan);
    EXPECT_EQ(intf.name(), name);
  }
  for (auto const* name :
       {"", "Vlan", "Vlan0", "Vlan4095", "Vlan010", "Vlan10 ", "Vlan+1", "vlan10", "Vxlan1", "Vlan65537"}) {
    EXPECT_FALSE(VlanIntfId::isVlanIntfId(IntfId(name))) << name;
    EXPECT_EQ(IntfId(name).name(), name);
  }
}

TEST(Values, streamAndFormatPrintTheText) {
  EXPECT_EQ(fmt::format("[{:>9}]", addr("10.0.0.1")), "[ 10.0.0.1]");
  EXPECT_EQ(fmt::format("{}", AddressFamily::ipv6), "ipv6");
  EXPECT_EQ(testing::PrintToString(addr("10.0.0.1")), "10.0.0.1");
}

/// How many of the 2^15 low and 2^7 high patterns the hashes of `count` values use.
template <class Make>
std::pair<std::size_t, std::size_t> spread(int count, Make make) {
  std::bitset<1 << 15> low;
  std::bitset<1 << 7> high;
  for (int i = 0; i < count; ++i) {
    std::size_t const hash = Kiln::Hash<std::decay_t<decltype(make(i))>>{}(make(i));
    low.set(hash & 0x7fff);
    high.set(hash >> 57);
  }
  return {low.count(), high.count()};
}

// Values drawn at random would use about 17 290 of the 32 768 low patterns.
TEST(Values, hashesOfNeighboursSpread) {
  constexpr int count = 24576;
  auto const v4 = [](int i) { return IpGenAddr(IpAddr(0x0a000001u + static_cast<std::uint32_t>(i))); };
  auto const v6 = [](int i) {
    Ip6Addr::Bytes bytes{0x20, 0x01, 0x0d, 0xb8};
    bytes[14] = static_cast<std::uint8_t>(i >> 8);
    bytes[15] = static_cast<std::uint8_t>(i);
    return IpGenAddr(Ip6Addr(bytes));
  };
  auto const mac = [](int i) { return EthAddr(0x020000000000u + static_cast<std::uint64_t>(i)); };
  auto const intf = [](int i) { return IntfId("spread" + std::to_string(i)); };
  auto const expectSpread = [](std::pair<std::size_t, std::size_t> used) {
    EXPECT_GT(used.first, 16500u);
    EXPECT_EQ(used.second, 128u);
  };
  expectSpread(spread(count, v4));
  expectSpread(spread(count, v6));
  expectSpread(spread(count, mac));
  expectSpread(spread(count, intf));
}

}  // namespace
}  // namespace Meshal
