#include <gtest/gtest.h>

#include "tests/support/TableFixture.h"

namespace {

using namespace TableTest;
using TesselVxlan::TunnelType;

TEST(OutgoingInterfaceRecords, areOnePerEncapsulationAndGoWithTheirLastUse) {
  TableWorld world({});
  auto first = world.oif1->insertEntry(TunnelType::overlay);
  auto second = world.oif1->insertEntry(TunnelType::overlay);
  auto const her = world.oif1->insertEntry(TunnelType::her);
  EXPECT_TRUE(Asic::sameEntry(first, second));
  EXPECT_EQ(world.show("VxlanEgrL3Oif1Table"), "her row 1: herEncap=1\noverlay row 0:\n");
  first = nullptr;
  EXPECT_EQ(world.keys("VxlanEgrL3Oif1Table"), "her\noverlay\n");
  second = nullptr;
  EXPECT_EQ(world.keys("VxlanEgrL3Oif1Table"), "her\n");
}

TEST(OutgoingInterfaceRecords, ofAFormerRunGo) {
  TableWorld world({});
  auto const kept = world.oif1->insertEntry(TunnelType::overlay);
  world.oif1->initTables(world.chipInfo());
  EXPECT_EQ(world.keys("VxlanEgrL3Oif1Table"), "");
}

TEST(OutgoingInterfaceRecords, areNotThereOnAChipWithoutThem) {
  TableWorld world({.cascaded = true, .her = false});
  EXPECT_EQ(world.oif1->vxlanEgrL3Oif1Table(), nullptr);
}

}  // namespace
