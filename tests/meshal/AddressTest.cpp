#include <fmt/format.h>
#include <gtest/gtest.h>

#include <bitset>

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
  using namespace std::string_view_literals;
  for (auto const text : {"10.0.0"sv, "10.0.0.256"sv, " 10.0.0.1"sv, "10.0.0.1 "sv, "2001:db8"sv, "fe80::1%eth0"sv,
                          "vtep"sv, "10.0.0.1\0x"sv}) {
    EXPECT_EQ(reread<IpGenAddr>(text), "no") << text;
  }
  EXPECT_EQ(reread<IpGenAddr>(std::string(300, '1')), "no");
  EXPECT_THROW(addr("10.0.0"), Kiln::RangeException);
  auto read = addr("10.0.0.1");
  EXPECT_TRUE(!Kiln::readText("10.0.0", read) && read == addr("10.0.0.1"));
  EXPECT_TRUE(Kiln::readText("", read) && read == IpGenAddr());
  EXPECT_EQ(fmt::format("[{:>9}]", addr("10.0.0.1")), "[ 10.0.0.1]");
  EXPECT_EQ(testing::PrintToString(addr("10.0.0.1")), "10.0.0.1");
}

TEST(IpGenAddr, familyAndPartsOfAnAddress) {
  IpGenAddr const v4 = addr("10.0.0.1"), v6 = v4.v6Addr();
  EXPECT_EQ(v4.bytes(), v6.bytes());
  EXPECT_NE(v4, v6);
  EXPECT_NE(hash_value(v4), hash_value(v6));
  std::string_view const ordered[] = {"", "0.0.0.0", "10.0.0.2", "10.0.1.1", "127.0.0.1", "128.0.0.1", "::", "::1"};
  for (std::size_t i = 1; i < std::size(ordered); ++i) EXPECT_LT(addr(ordered[i - 1]), addr(ordered[i]));
  EXPECT_EQ(v4.v4Addr().value(), 0x0a000001u);
  EXPECT_EQ(v4.u64(0), 0x0a00000100000000u);
  EXPECT_EQ(addr("2001:db8::1:2").u64(0), 0x20010db800000000u);
  EXPECT_EQ(addr("2001:db8::1:2").u64(1), 0x10002u);
  EXPECT_EQ(addr("2001:db8:1:2:3333:4:5:6").getUpper64V6Addr(), addr("2001:db8:1:2::"));
  for (auto const* text : {"", "0.0.0.0", "::"}) EXPECT_TRUE(addr(text).isUnspecified()) << text;
  for (auto const* text : {"0.0.0.1", "::1"}) EXPECT_FALSE(addr(text).isUnspecified()) << text;
}

TEST(IpAddr, multicastRanges) {
  for (auto const& [text, multicast, reserved] : {std::tuple{"223.255.255.255", false, false},
                                                  {"224.0.0.0", true, true},
                                                  {"224.0.0.255", true, true},
                                                  {"224.0.1.0", true, false},
                                                  {"239.255.255.255", true, false},
                                                  {"240.0.0.0", false, false}}) {
    EXPECT_EQ(addr(text).v4Addr().isMulticast(), multicast) << text;
    EXPECT_EQ(addr(text).v4Addr().isReservedMulticast(), reserved) << text;
  }
}

TEST(EthAddr, textReadsBack) {
  EthAddr const mac(0x0200000000ffu);
  EXPECT_EQ(reread<EthAddr>("02:00:00:00:00:FF"), "02:00:00:00:00:ff");
  EXPECT_EQ(Kiln::fromText<EthAddr>("02:00:00:00:00:FF"), mac);
  EXPECT_EQ(mac.u64(), 0x0200000000ffu);
  for (auto const* text : {"", "02:00:00:00:00", "02:00:00:00:00:0", "02-00:00:00:00:01", "02:00:00:00:00-01",
                           "02:00:00:00:00:0g", "02:00:00:00:00:-1", "02:00:00:00:00:011"}) {
    EXPECT_EQ(reread<EthAddr>(text), "no") << text;
  }
}

TEST(IntfId, oneNameIsOneIdAndAVlanInterfaceHasItsNumber) {
  IntfId const first("Ethernet1");
  // The names stay good while the table grows.
  for (int i = 0; i < 5000; ++i) IntfId("grow" + std::to_string(i));
  EXPECT_EQ(IntfId::handleInitialized("Ethernet1"), first);
  EXPECT_EQ(first.name(), "Ethernet1");
  EXPECT_NE(IntfId("Ethernet2"), first);
  EXPECT_EQ(IntfId(""), IntfId());
  EXPECT_TRUE(IntfId("").empty() && !first.empty());
  for (int const vlan : {1, 10, 4094}) {
    auto const name = "Vlan" + std::to_string(vlan);
    IntfId const intf(name);
    ASSERT_TRUE(VlanIntfId::isVlanIntfId(intf)) << name;
    EXPECT_EQ(VlanIntfId::vlanId(intf), vlan);
    EXPECT_EQ(intf.name(), name);
  }
  for (auto const* name :
       {"", "Vlan", "Vlan0", "Vlan4095", "Vlan010", "Vlan10 ", "Vlan+1", "vlan10", "Vxlan1", "Vlan65537"}) {
    EXPECT_FALSE(VlanIntfId::isVlanIntfId(IntfId(name))) << name;
    EXPECT_EQ(IntfId(name).name(), name);
  }
}

/// Expects the hashes of 24,576 neighbours to use as many low and high patterns as numbers drawn at random.
template <class Make>
void expectSpread(Make make) {
  std::bitset<1 << 15> low;
  std::bitset<1 << 7> high;
  for (std::uint32_t i = 0; i < 24576; ++i) {
    std::size_t const hash = Kiln::Hash<std::decay_t<decltype(make(i))>>{}(make(i));
    low.set(hash & 0x7fff);
    high.set(hash >> 57);
  }
  EXPECT_GT(low.count(), 16500u);  // At random about 17,290 of 32,768.
  EXPECT_EQ(high.count(), 128u);
}

TEST(Values, hashesOfNeighboursSpread) {
  expectSpread([](std::uint32_t i) { return IpGenAddr(IpAddr(0x0a000001u + i)); });
  expectSpread([](std::uint32_t i) { return addr(fmt::format("2001:db8::{:x}", i)); });
  expectSpread([](std::uint32_t i) { return EthAddr(0x020000000000u + i); });
  expectSpread([](std::uint32_t i) { return IntfId("spread" + std::to_string(i)); });
}

}  // namespace
}  // namespace Meshal
