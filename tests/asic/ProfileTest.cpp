#include <gmock/gmock.h>

#include "platform/asic/ProfileLoader.h"
#include "platform/asic/SimulatedChip.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/features/ChipAttributes.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/tables/EcmpMember1Table.h"
#include "platform/tessel/tables/L2TunnelTermTables.h"
#include "platform/tessel/tables/L3NextHop1Table.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"

namespace {

using TesselVxlan::TesselChipAttributesVxlan;
using testing::AllOf;
using testing::HasSubstr;

std::string faultOf(std::string_view json) {
  try {
    Asic::parseProfile(json, "my.json");
  } catch (Kiln::InputError const& error) {
    return error.what();
  }
  return "none";
}

TEST(Profiles, TableIsThereIfAndOnlyIfItHasRows) {
  auto const flat = Asic::loadProfile("flat");
  auto const compact = Asic::loadProfile("compact");
  EXPECT_TRUE(flat->feature<TesselVxlan::EcmpMember1Table::Util>());
  EXPECT_FALSE(compact->feature<TesselVxlan::EcmpMember1Table::Util>());
  EXPECT_FALSE(compact->feature<TesselVxlan::L2TunnelIpv6SipTable::Util>());
  EXPECT_TRUE(flat->feature<TesselVxlan::L3NextHop1Table::Util>()) << "a merged table by its parts";
  EXPECT_FALSE(compact->feature<TesselVxlan::L3NextHop1Table::Util>());
}

TEST(Profiles, FaultsNameFilePlaceAndValue) {
  struct {
    std::string_view json;
    std::vector<std::string> parts;
  } const cases[] = {
      {"{\n\"name\":", {"my.json: line 2", "expected a JSON value"}},
      {"[]", {"my.json", "expected"}},
      {R"({"name": 3})", {"/name", "3"}},
      {R"({"name": "x", "colour": 1})", {"/colour", "1", "unknown member"}},
      {R"({"name": "x", "tables": {"NoTable": {"rows": 1}}})", {"/tables/NoTable", "unknown table"}},
      {R"({"name": "x", "tables": {"EcmpMember1Table": {"rows": -1}}})", {"/tables/EcmpMember1Table/rows", "-1"}},
      {R"({"name": "x", "tables": {"EcmpMember1Table": {"rows": 1, "bank": 2}}})", {"bank", "unknown member"}},
      {R"({"name": "x", "tables": {"L3NextHop1Table": {"rows": 1}}})", {"L3NextHop1Table", "IngL3NextHop1"}},
      {R"({"name": "x", "features": {"No::Feature": {}}})", {"/features/No::Feature", "unknown feature"}},
      {R"({"name": "x", "features": {"TesselCentral::ChipAttributes": {"big": true}}})", {"big", "unknown attribute"}},
      {R"({"name": "x", "features": {"TesselVxlan::TesselChipAttributesVxlan":
            {"vxlanCascadedForwardingSupport": true, "vpClassCode": 16}}})",
       {"TesselChipAttributesVxlan", "vpClassCode", "16", "0 to 15"}},
      {R"({"name": "x", "tables": {"EcmpMember1Table": {"rows": 1, "base": 0}}})",
       {"TesselChipAttributesVxlan", "HER next-hop tables"}},
  };
  for (auto const& one : cases) {
    auto const fault = faultOf(one.json);
    for (auto const& part : one.parts) EXPECT_THAT(fault, HasSubstr(part)) << one.json;
  }
  EXPECT_THROW(Asic::loadProfile("/nowhere/x.json"), Kiln::InputError);
}

}  // namespace
