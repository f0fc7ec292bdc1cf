#include <gtest/gtest.h>

#include "TesselVxlan/frame/TesselVxlanVaulterPStoreHelper.h"
#include "platform/kiln/Fmt.h"
#include "tests/support/Watch.h"

namespace FrameTest {

/// Restores documents and tells in which order the ids were taken up: "port 4097=10.0.0.2 ".
class Upgrade : public testing::Test {
 protected:
  std::string restore(std::string const& text) {
    std::string order;
    using State = TesselCentral::VxlanToL2State;
    Support::Watch const watch(*state, [&](Dovel::Change const& change) {
      if (change.id == State::recoveredTnlIdToVtepId) {
        auto const id = change.keyAs<Vane::VaneTunnelId>();
        order += fmt::format("port {}={} ", id, state->recoveredTnlIdToVtep(id));
      } else if (change.id == State::recoveredNhIdToVtepId) {
        auto const id = change.keyAs<Vane::VaneNextHopId>();
        order += fmt::format("next hop {}={} ", id, state->recoveredNhIdToVtep(id));
      }
    });
    rapidjson::Document document;
    document.Parse(text.c_str());
    TesselVxlan::tesselVxlanVaulterPStoreHelperFactory(state)->doRestore(document);
    for (auto const& list : state->recoveredMHTnlIdToVtepListColl()) {
      order += fmt::format("list {}=[{}] ", list->tnlId(), fmt::join(Kiln::keysOf(list->activeVtepListColl()), " "));
    }
    return order;
  }

  Dovel::Ptr<TesselCentral::VxlanToL2State> state = Dovel::make<TesselCentral::VxlanToL2State>("state");
};

TEST_F(Upgrade, restoresIdsAndReplacesWhatTheyWereRestoredTo) {
  EXPECT_EQ(restore("{}"), "");
  EXPECT_EQ(restore(R"({"mhTnlIdVtepList":{"4100":["10.0.0.4","2001:db8::3","10.0.0.3"]},)"
                    R"("vxlanNhIdVtepMap":{"12":"10.0.0.2"},"vxlanVpVtepMap":{"4097":"10.0.0.2"}})"),
            "port 4097=10.0.0.2 next hop 12=10.0.0.2 list 4100=[10.0.0.3 10.0.0.4 2001:db8::3] ");
  EXPECT_EQ(restore(R"({"mhTnlIdVtepList":{"4100":["10.0.0.5"]}})"), "list 4100=[10.0.0.5] ");
  EXPECT_EQ(restore(R"({"vxlanVpVtepMap":{"4097":"10.0.0.9"},"mhTnlIdVtepList":{"4100":[]}})"),
            "port 4097=10.0.0.9 list 4100=[] ");
  EXPECT_EQ(state->recoveredNhIdToVtep(Vane::VaneNextHopId(12)), Meshal::IpGenAddr("10.0.0.2"));
}

TEST_F(Upgrade, documentsAreTheSystemsOwn) {
  EXPECT_THROW(restore(R"({"vxlanVpVtepMap":{"port":"10.0.0.2"}})"), std::invalid_argument);
  EXPECT_THROW(restore(R"({"mhTnlIdVtepList":{"99999999999":[]}})"), std::out_of_range);
  for (auto const* text : {"[]", R"({"vxlanVpVtepMap":[]})", R"({"vxlanVpVtepMap":{"1":2}})",
                           R"({"vxlanNhIdVtepMap":{"1":["10.0.0.2"]}})", R"({"mhTnlIdVtepList":{"1":"10.0.0.2"}})"}) {
    EXPECT_DEATH(restore(text), "IsObject|GetType") << text;
  }
}

}  // namespace FrameTest
