#include "tests/host/CommandWorld.h"

namespace Host::Test {

class Upgrade : public Files {
 protected:
  static std::string textOf(std::string const& name) {
    std::ifstream file(name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  /// What the agent that printed its state has recovered.
  static std::string recoveredIn(std::string const& state) {
    std::istringstream lines(state);
    std::string recovered;
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("  recovered")) recovered += "= " + line.substr(2) + '\n';
    }
    return recovered.empty() ? "= nothing\n" : recovered;
  }

  std::size_t filesBeside() const {
    return std::distance(std::filesystem::directory_iterator(base()), std::filesystem::directory_iterator());
  }
};

TEST_F(Upgrade, documentsAreRestoredOrRefusedAsWrittenDown) {
  auto const saved = file("saved.json", "as it was");
  for (auto& [given, result] : cases("input/upgrades.txt")) {
    ASSERT_EQ(given.size(), 1U) << result;
    auto const name = file("upgrade.json", given[0] + '\n');
    auto const ran = run({"run", "--restore-upgrade", name, "--save-upgrade", saved, "--show", "state"});
    SCOPED_TRACE(given[0] + '\n' + ran.err);
    if (!result.starts_with("= refused ")) {
      EXPECT_EQ(recoveredIn(ran.out), result);
      continue;
    }
    EXPECT_EQ(ran.code, kUnusable);
    EXPECT_EQ(ran.out, "");
    result.pop_back();
    EXPECT_THAT(ran.err, testing::StartsWith(name));
    EXPECT_THAT(ran.err, testing::HasSubstr(result.substr(10)));
  }
}

// A group's id has bit 15; on the small chip the last two of seven VTEPs have found no virtual port, and the third last
// no overlay entry.
TEST_F(Upgrade, theNextRunHasWhatTheFormerHad) {
  for (auto const& [profile, input, restored] :
       {std::tuple("cascaded", "input/overlay.json",
                   "= recoveredTnlIdToVtep={\"2\":\"10.255.0.2\",\"3\":\"10.255.0.3\",\"4\":\"10.255.0.4\"}\n"
                   "= recoveredNhIdToVtep={\"0\":\"10.255.0.2\",\"1\":\"10.255.0.3\",\"2\":\"10.255.0.4\"}\n"
                   "= recoveredMHTnlIdToVtepList={"
                   "\"32768\":{\"tnlId\":32768,\"activeVtepList\":{\"10.255.0.2\":true,\"10.255.0.3\":true}},"
                   "\"32769\":{\"tnlId\":32769,\"activeVtepList\":{\"10.255.0.3\":true,\"10.255.0.4\":true}}}\n"),
        {"tiny", "input/seven-vteps.json",
         "= recoveredTnlIdToVtep={\"2\":\"10.255.0.2\",\"3\":\"10.255.0.3\",\"4\":\"10.255.0.4\",\"5\":\"10.255.0.5\","
         "\"6\":\"10.255.0.6\"}\n"
         "= "
         "recoveredNhIdToVtep={\"0\":\"10.255.0.2\",\"1\":\"10.255.0.3\",\"2\":\"10.255.0.4\",\"3\":\"10.255.0.5\"}"
         "\n"}}) {
    auto const saved = file("saved.json", "from a former run");
    run({"run", "--profile", profile, "--save-upgrade", saved, data(input)});
    auto const again = file("again.json", "");
    auto const ran = run({"run", "--restore-upgrade", saved, "--save-upgrade", again, "--show", "state", "--profile",
                          profile, data(input)});
    EXPECT_EQ(recoveredIn(ran.out), restored);
    EXPECT_EQ(textOf(again), textOf(saved));
    EXPECT_EQ(filesBeside(), 2U);
  }
}

TEST_F(Upgrade, whatCannotBeWrittenIsRefusedBeforeAnythingIsPrinted) {
  auto const saved = file("saved.json", "as it was");
  auto const directory = base().string();
  for (auto const& name : {directory + "/none/saved.json", directory, std::string("/dev/null"), saved + "/x"}) {
    auto const ran = run({"run", "--show-each", "--save-upgrade", name});
    EXPECT_EQ(ran.code, kUnusable);
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, testing::StartsWith(name + ": found "));
  }
  EXPECT_EQ(run({"run", "--save-upgrade", saved, data("none.json")}).code, kUnusable);
  EXPECT_EQ(textOf(saved), "as it was");
  EXPECT_EQ(filesBeside(), 1U);
}

}  // namespace Host::Test
