#include "host/scenario/Scenario.h"
#include "platform/kiln/Json.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

TEST(Scenarios, theExamplesAndTheStoriesOfTestsHold) {
  for (auto const* directory : {TESSEL_SOURCE_DIR "/examples", TESSEL_SOURCE_DIR "/tests/data/scenarios"}) {
    for (auto const& entry : std::filesystem::directory_iterator(directory)) {
      auto const ran = run({"run", entry.path().string()});
      EXPECT_EQ(ran.code, kGood) << entry.path() << ran.out << ran.err;
    }
  }
}

TEST(MergePatch, replacesAddsAndRemoves) {
  for (auto const& [given, result] : cases("input/merge-patches.txt")) {
    rapidjson::Document target;
    target.Parse(given[0].c_str());
    mergePatch(target, Kiln::JsonDocument::parse(given[1], "patch").root().value(), target.GetAllocator());
    EXPECT_TRUE(target == Kiln::JsonDocument::parse(result.substr(2), "wanted").json()) << given[1];
  }
}

}  // namespace Host::Test
