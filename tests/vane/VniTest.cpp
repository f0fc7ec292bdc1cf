// The numbering of VLANs and VFIs, VLANs of VNIs from two sources, the packet driver, and numbers of groups.

#include <gtest/gtest.h>

#include "platform/anvil/IoctlDrv.h"
#include "platform/kiln/Fmt.h"
#include "platform/tessel/central/VlanVfi.h"
#include "platform/vane/VtepGroup.h"
#include "platform/vxlan/RemoteVniToSBDVlanMergeSm.h"

namespace {

using Bridging::VlanId;
using Vxlan::SwTunnelGroupId;
using Vxlan::VniExt;

TEST(VlanVfi, numbersBothWaysWhereItIsOn) {
  auto const has = Dovel::make<TesselCentral::VfiCapabilityStatus>("capabilities");
  auto const dir = Dovel::make<TesselCentral::VlanVfiDir>("dir");
  has->vlan4095VfiIs(4090);
  has->vlan0VfiIs(4089);
  for (auto const& [vlan, vfi] : {std::pair(10, 110), {4094, 1}, {4095, 7}, {0, 8}}) {
    dir->vlanToVfiIs(static_cast<std::uint16_t>(vlan), static_cast<std::uint16_t>(vfi));
    dir->vfiToVlanIs(static_cast<std::uint16_t>(vfi), static_cast<std::uint16_t>(vlan));
  }
  dir->vfiToVlanIs(4094, 12);
  auto const vfis = [&] {
    std::string text;
    for (auto const vlan : std::initializer_list<std::uint16_t>{0, 10, 11, 4094, 4095, 5000}) {
      text += fmt::format("{} ", TesselCommon::vlanToVfi(*has, *dir, vlan));
    }
    for (auto const vfi : std::initializer_list<std::uint16_t>{0, 4089, 4090, 110, 111, 1, 4094}) {
      text += fmt::format(" {}", TesselCommon::vfiToVlan(*has, *dir, vfi));
    }
    return text;
  };
  std::string const same = "0 10 11 4094 4095 5000  0 4089 4090 110 111 1 4094";
  EXPECT_EQ(vfis(), same);
  has->vfiEnabledIs(true);
  EXPECT_EQ(vfis(), same);
  has->vfiMappingEnabledIs(true);
  EXPECT_EQ(vfis(), "0 110 4090 1 4090 4090  0 0 4095 10 1 4094 12");
  EXPECT_DEATH(TesselCommon::vfiToVlan(*has, *dir, 4095), "vfi > 0 && vfi <= Bridging::VlanId::max");
}

TEST(RemoteVnis, areMergedWithRoutingFirst) {
  auto const make = [] { return Dovel::make<Vxlan::RemoteVniToVlanStatus>(""); };
  auto const irb = make(), fixed = make(), merged = make();
  VniExt const a(10), b(11);
  fixed->vniToVlanIs(a, VlanId(1));
  irb->vniToVlanIs(b, VlanId(2));
  auto const sm = Dovel::make<Vxlan::RemoteVniToSBDVlanMergeSm>(irb, fixed, merged);
  EXPECT_EQ(merged->vniToVlan(a), VlanId(1));
  EXPECT_EQ(merged->vniToVlan(b), VlanId(2));
  irb->vniToVlanIs(a, VlanId(3));
  fixed->vniToVlanIs(b, VlanId(4));
  EXPECT_EQ(merged->vniToVlan(a), VlanId(3));
  EXPECT_EQ(merged->vniToVlan(b), VlanId(2));
  irb->vniToVlanDelAll();
  EXPECT_EQ(merged->vniToVlan(a), VlanId(1));
  fixed->vniToVlanDel(b);
  EXPECT_FALSE(merged->vniToVlanHas(b));
}

TEST(PacketDriver, keepsItsAssignmentsAndItsLastRequests) {
  Anvil::ioctlDrvFabFactory(nullptr)->vniToVlanMap(1, 1);
  auto const fab = Dovel::make<Anvil::IoctlDrvFab>("fab");
  auto const driver = Anvil::ioctlDrvFabFactory(fab);
  for (std::uint16_t n = 1; n <= Anvil::IoctlDrvFab::kept + 6; ++n) driver->vniToVlanMap(n, n);
  driver->vniToVlanMap(3, 0);
  EXPECT_EQ(fab->vniToVlanColl().size(), Anvil::IoctlDrvFab::kept + 5);
  EXPECT_EQ(fab->requests(), Anvil::IoctlDrvFab::kept + 7);
  EXPECT_EQ(fab->requestColl().size(), Anvil::IoctlDrvFab::kept);
  EXPECT_EQ(fab->request(7), (Anvil::IoctlRequest{Anvil::IoctlDrvFab::kept + 7, 3, 0}));
}

TEST(GroupNumbers, areCounted) {
  auto const count = [](std::uint32_t group) {
    auto const found = SwTunnelGroupId::refcountTable().find(group);
    return found == SwTunnelGroupId::refcountTable().end() ? 0U : found->second;
  };
  {
    SwTunnelGroupId a(7), b(a);
    SwTunnelGroupId const c(8);
    EXPECT_EQ(count(7), 2U);
    auto const& self = b;
    b = self;
    EXPECT_EQ(count(7), 2U);
    b = c;
    EXPECT_EQ(count(7), 1U);
    EXPECT_EQ(count(8), 2U);
    a = b;
    EXPECT_EQ(count(7), 0U);
  }
  EXPECT_EQ(count(8), 0U);
}

}  // namespace
