#include "host/scenario/Scenario.h"
#include "platform/kiln/Json.h"
#include "tests/host/CommandWorld.h"

namespace Host::Test {

using testing::HasSubstr;

class ScenarioCommand : public Files {
 protected:
  /// A run of a scenario with these members, on a state of two VTEPs.
  Ran play(std::string const& members, std::vector<std::string> const& options = {}) {
    file("state.json", wishTo(2).document());
    std::vector<std::string> arguments{"run", file("scenario.json", R"({"state": "state.json", )" + members + "}")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run(arguments);
  }
};

TEST_F(ScenarioCommand, theExamplesAndTheStoriesOfTestsHold) {
  for (auto const* directory : {TESSEL_SOURCE_DIR "/examples", TESSEL_SOURCE_DIR "/tests/data/scenarios"}) {
    for (auto const& entry : std::filesystem::directory_iterator(directory)) {
      auto const ran = run({"run", entry.path().string()});
      EXPECT_EQ(ran.code, kGood) << entry.path() << ran.out << ran.err;
    }
  }
}

TEST_F(ScenarioCommand, showsWhatIsViolatedAndEndsWithOne) {
  auto const steps = R"("steps": [
    {"name": "first", "expect": {"/profile": "flat", "/tunnels/#": 7, "/tunnels/vtep=10.255.0.2/adjId": 7,
                                 "/tunnels/vtep=10.9.9.9/adjId": 7, "/tunnels/vtep=10.9.9.9": null,
                                 "/tunnels/0": {"programmed": true, "type": "vxlanTunnel"}, "/tunnels/9": null,
                                 "/tables/VirtualPortTableMerged/entries/key=10.255.0.2&state=4": null}},
    {"refuse": [{"key": "10.255.0.2", "with": "failed"}, {"write": 900}], "patch": {"stateway": {"evpn/status": null}},
     "restart": true, "expect": {"/tunnels/programmed": true}},
    {"heal": true, "restart": true, "expect": {"/tunnels/programmed": true}}])";
  auto const text = play(steps, {"--profile", "tiny"});
  EXPECT_EQ(text.code, kNotProgrammed) << text.err;
  EXPECT_TRUE(
      inOrder(text.out, {"== step 1: first\n/profile: wanted \"flat\", found \"tiny\"\n",
                         "/tunnels/#: wanted 7, found 1\n/tunnels/vtep=10.9.9.9/adjId: wanted 7, found nothing\n",
                         "== step 2\n/tunnels/programmed: wanted true, found false\n", "== step 3\n\n"}));
  auto const json = play(R"("profile": "flat", "completion": "deferred", )" + std::string(steps), {"--format", "json"});
  ASSERT_EQ(json.code, kNotProgrammed) << json.err;
  auto const document = json.json();
  EXPECT_STREQ(document["profile"].GetString(), "flat") << "the scenario's own, where the options name none";
  EXPECT_EQ(document["steps"][1]["expected"].GetUint(), 8U);
  EXPECT_STREQ(document["steps"][1]["violations"][0]["path"].GetString(), "/tunnels/#");
  EXPECT_EQ(document["steps"][2]["violations"].Size(), 1U);
  EXPECT_EQ(play(R"("steps": [{"expect": {"/tunnels/vtep=10.255.0.2/programmed": true}}])").code, kGood);
  EXPECT_EQ(play(R"("steps": [{"refuse": [{"table": "VirtualPort1Table"}], "restart": true}])").code, kNotProgrammed)
      << "without an expectation it ends as a state does";
}

TEST_F(ScenarioCommand, refusesWhatIsNoScenario) {
  std::pair<char const*, char const*> const cases[] = {
      {R"("step": [], "steps": [])", "scenario.json: /step: found [], unknown member"},
      {R"("steps": {})", "/steps: found {}, expected an array"},
      {R"("completion": "late", "steps": [])", R"(/completion: found "late", expected one of direct deferred)"},
      {R"("steps": [{"do": 1}])", "/steps/0/do: found 1, unknown member"},
      {R"("steps": [{"patch": 1}])", "/steps/0/patch: found 1, expected an object"},
      {R"("steps": [{"expect": {"a//b": 1}}])", "expected a path such as"},
      {R"("steps": [{"refuse": [{"with": "full"}]}])", "expected one of table key write"},
      {R"("steps": [{"refuse": [{"table": "X", "with": "no"}]}])", R"(/with: found "no", expected one of failed full)"},
      {R"("steps": [{"refuse": [{"table": "X"}]}])", "step 1/refuse: found X, expected a table of the chip"},
      {R"("steps": [{"patch": {"stateway": {"nowhere": {}}}}])", "scenario.json, step 1: /stateway/nowhere"},
  };
  for (auto const& [members, error] : cases) {
    auto const ran = play(members);
    EXPECT_EQ(ran.code, kUnusable) << members;
    EXPECT_EQ(ran.out, "") << members;
    EXPECT_THAT(ran.err, HasSubstr(error));
  }
  auto const scenario = file("scenario.json", R"({"steps": []})");
  EXPECT_THAT(run({"run", scenario, scenario}).err, HasSubstr("a scenario is the only input of a run"));
}

TEST(MergePatch, replacesAddsAndRemoves) {
  std::tuple<char const*, char const*, char const*> const cases[] = {
      {R"({"a":"b"})", R"({"a":"c"})", R"({"a":"c"})"},
      {R"({"a":"b","b":"c"})", R"({"a":null})", R"({"b":"c"})"},
      {R"({"a":["b"]})", R"({"a":"c"})", R"({"a":"c"})"},
      {R"({"a":{"b":"c"}})", R"({"a":{"b":"d","c":null}})", R"({"a":{"b":"d"}})"},
      {R"({"a":1})", R"(["c"])", R"(["c"])"},
      {R"({"e":null})", R"({"a":1})", R"({"e":null,"a":1})"},
      {"[1,2]", R"({"a":"b","c":null})", R"({"a":"b"})"},
      {"{}", R"({"a":{"bb":{"ccc":null}}})", R"({"a":{"bb":{}}})"},
  };
  for (auto const& [target, patch, wanted] : cases) {
    rapidjson::Document result;
    result.Parse(target);
    mergePatch(result, Kiln::JsonDocument::parse(patch, "patch").root().value(), result.GetAllocator());
    EXPECT_TRUE(result == Kiln::JsonDocument::parse(wanted, "wanted").json()) << patch;
  }
}

}  // namespace Host::Test
