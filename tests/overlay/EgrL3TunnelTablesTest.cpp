#include <gtest/gtest.h>

#include "OverlayWorld.h"
#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Trace.h"

namespace {

using namespace OverlayTest;

constexpr char const* v4 = "EgrL3Ipv4TunnelTable";
constexpr char const* v6 = "EgrL3Ipv6TunnelTable";
constexpr char const* defaultHeader = " >  row 0: hdrSelectA=1 hdrSelectB=2 udpDestPort=4000\n";

/// Outer headers on a chip of each way of completion.
class Headers : public testing::TestWithParam<Asic::Completion> {
 protected:
  ChipSpec chip() const { return {.completion = GetParam()}; }
};
INSTANTIATE_TEST_SUITE_P(Chips, Headers, testing::Values(Asic::Completion::direct, Asic::Completion::deferred));

TEST_P(Headers, beginWithTheDefaultOne) {
  OverlayWorld world(chip());
  EXPECT_EQ(world.show(v4), defaultHeader);
  EXPECT_EQ(world.show(v6), "");
  auto const found = world.headers->entryWeakRef({}, {});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->row(), Asic::Index(0));
  EXPECT_EQ(world.headers->entryWeakRef(ip("10.0.0.1"), {}), nullptr);
}

TEST_P(Headers, areSharedByTheTunnelsOfASourceWhereTheChipKeysBySource) {
  auto chipAsked = chip();
  chipAsked.ipv4DipInKey = false;
  OverlayWorld world(chipAsked);
  auto first = world.headers->insertEntry(header("10.0.0.1", true, 5000), ip("10.0.0.2"));
  auto const second = world.headers->insertEntry(header("10.0.0.1", true, 5000), ip("10.0.0.3"));
  auto const other = world.headers->insertEntry(header("10.0.0.9"), ip("10.0.0.2"));
  world.settle();
  EXPECT_TRUE(Asic::sameEntry(first, second));
  EXPECT_EQ(world.writes(), 2) << "the second tunnel finds its header written";
  for (auto const* dip : {"10.0.0.2", "10.0.0.77", ""}) {
    EXPECT_TRUE(Asic::sameEntry(first, world.headers->entryWeakRef(ip("10.0.0.1"), ip(dip)))) << dip;
  }
  EXPECT_EQ(world.show(v4), std::string(defaultHeader) +
                                "10.0.0.1 >  row 1: sip=10.0.0.1 ttl=64 hdrSelectA=3 tunnelEntry=1 udpSrcPortValid=1 "
                                "outerDscpFromInner=1 hdrSelectB=4 udpSrcPort=5000 udpDestPort=4789\n"
                                "10.0.0.9 >  row 2: sip=10.0.0.9 ttl=64 hdrSelectA=3 tunnelEntry=1 "
                                "outerDscpFromInner=1 hdrSelectB=4 udpDestPort=4789\n");
  first = nullptr;
  EXPECT_FALSE(second->gone());
}

TEST_P(Headers, standApartWhereTheChipKeysByDestinationToo) {
  OverlayWorld world(chip());
  auto const first = world.headers->insertEntry(header("10.0.0.1"), ip("10.0.0.2"));
  {
    auto const second = world.headers->insertEntry(header("10.0.0.1"), ip("10.0.0.3"));
    EXPECT_FALSE(Asic::sameEntry(first, second));
    EXPECT_TRUE(Asic::sameEntry(second, world.headers->entryWeakRef(ip("10.0.0.1"), ip("10.0.0.3"))));
  }
  EXPECT_EQ(world.headers->entryWeakRef(ip("10.0.0.1"), ip("10.0.0.3")), nullptr) << "a header goes with its last user";
  EXPECT_EQ(world.show(v4),
            std::string(defaultHeader) +
                "10.0.0.1 > 10.0.0.2 row 1: sip=10.0.0.1 dip=10.0.0.2 ttl=64 hdrSelectA=3 tunnelEntry=1 "
                "outerDscpFromInner=1 hdrSelectB=4 udpDestPort=4789\n");
}

TEST_P(Headers, ofIpv6HaveNoSourcePortAndMayShareHalfADestination) {
  for (bool const upperOnly : {false, true}) {
    auto chipAsked = chip();
    chipAsked.ipv6DipUpper64Only = upperOnly;
    OverlayWorld world(chipAsked);
    auto const key = header("2001:db8::1", true, 5000);
    auto const first = world.headers->insertEntry(key, ip("2001:db8:1::2"));
    auto const second = world.headers->insertEntry(key, ip("2001:db8:1::3"));
    EXPECT_EQ(Asic::sameEntry(first, second), upperOnly);
    EXPECT_TRUE(Asic::sameEntry(second, world.headers->entryWeakRef(ip("2001:db8::1"), ip("2001:db8:1::3"))));
    EXPECT_EQ(bool(world.headers->entryWeakRef(ip("2001:db8::1"), ip("2001:db8:1::4"))), upperOnly);
    std::string const dip = upperOnly ? "2001:db8:1::" : "2001:db8:1::2";
    EXPECT_EQ(world.show(v6).substr(0, world.show(v6).find('\n')),
              "2001:db8::1 > " + dip + " row 0: sip=2001:db8::1 outerDscpFromInner=1 hdrSelectA=3 ttl=64 dip=" + dip +
                  " hdrSelectB=4 udpDestPort=4789");
    EXPECT_EQ(world.show(v4), defaultHeader);
  }
}

TEST_P(Headers, takeTheSettingsOfTheirLastWrite) {
  OverlayWorld world(chip());
  auto const handle = world.headers->insertEntry(header("10.0.0.1"), ip("10.0.0.2"));
  world.writes();
  world.config->dscpPropagationIs(true);
  world.trust->tosBasePtrIs(127);
  EXPECT_EQ(world.writes(), 0);
  auto const again = world.headers->insertEntry(header("10.0.0.1"), ip("10.0.0.2"));
  EXPECT_TRUE(Asic::sameEntry(handle, again));
  EXPECT_EQ(world.writes(), 1);
  EXPECT_EQ(world.hardware().field(v4, 1, "outerDscpFromInner"), 3);
  EXPECT_EQ(world.hardware().field(v4, 1, "tosBasePtr"), 127);
}

TEST_P(Headers, refuseATrustMapBeyondTheirField) {
  OverlayWorld world(chip());
  world.trust->tosBasePtrIs(128);
  for (auto const& [sip, dip] : {std::pair("10.0.0.1", "10.0.0.2"), std::pair("2001:db8::1", "2001:db8::2")}) {
    try {
      world.headers->insertEntry(header(sip), ip(dip));
      FAIL();
    } catch (Kiln::RangeException const& e) {
      EXPECT_STREQ(e.what(), "U7::value < 0 or > 0x7f not allowed");
    }
  }
  EXPECT_EQ(world.show(v4) + world.show(v6), defaultHeader);
}

TEST_P(Headers, thatWereRefusedRaiseNoMessageAndAreWrittenAgain) {
  OverlayWorld world(chip());
  for (auto const& [table, sip, dip] :
       {std::tuple(v4, "10.0.0.1", "10.0.0.2"), std::tuple(v6, "2001:db8::1", "2001:db8::2")}) {
    world.hardware().refuseTable(table, Asic::EntryState::failed);
    auto const handle = world.headers->insertEntry(header(sip), ip(dip));
    EXPECT_EQ(world.messages(), "");
    world.hardware().refuseNone();
    auto const again = world.headers->insertEntry(header(sip), ip(dip));
    world.settle();
    EXPECT_EQ(handle->state(), Asic::EntryState::written);
  }
}

TEST_P(Headers, thatFindNoRoomAreToldOncePerWriteAndHeal) {
  auto chipAsked = chip();
  chipAsked.rows = {{v4, 2}, {v6, 1}};
  OverlayWorld world(chipAsked);
  for (auto const& [sip, dip, dip2] :
       {std::tuple("10.0.0.1", "10.0.0.2", "10.0.0.3"), std::tuple("2001:db8::1", "2001:db8::2", "2001:db8::3")}) {
    std::string const full = std::string(
                                 "TESSEL_VXLAN_TUNNEL_TABLE_RESOURCE_FULL: Hardware resources are insufficient "
                                 "to program outer SIP ") +
                             sip + ".\n";
    auto first = world.headers->insertEntry(header(sip), ip(dip));
    EXPECT_EQ(world.messages(), "");
    auto const second = world.headers->insertEntry(header(sip), ip(dip2));
    ASSERT_TRUE(second);
    EXPECT_EQ(world.messages(), full);
    EXPECT_EQ(second->state(), Asic::EntryState::full);
    auto const again = world.headers->insertEntry(header(sip), ip(dip2));
    EXPECT_EQ(world.messages(), full);
    first = nullptr;
    world.settle();
    EXPECT_EQ(second->state(), Asic::EntryState::written) << "the row that came free is given to it";
    EXPECT_EQ(world.messages(), "");
  }
}

TEST_P(Headers, outliveTheirProgrammer) {
  OverlayWorld world(chip());
  Kiln::TraceCapture traces("TesselVxlanEgrL3TunnelTablesProgrammer");
  auto handle = world.headers->insertEntry(header("10.0.0.1"), ip("10.0.0.2"));
  world.headers = nullptr;
  world.settle();
  EXPECT_TRUE(traces.contains("operator(): entryState is :")) << "the answer is heard all the same";
  EXPECT_EQ(handle->state(), Asic::EntryState::written);
}

}  // namespace
