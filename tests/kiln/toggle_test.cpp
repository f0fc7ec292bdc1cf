#include "platform/kiln/Toggle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/kiln/Exceptions.h"

namespace {

class ToggleTest : public testing::Test {
 protected:
  ToggleTest() {
    std::filesystem::create_directories(directory);
    setenv("TESSEL_TOGGLE_DIR", directory.c_str(), 1);
  }
  ~ToggleTest() override {
    unsetenv("TESSEL_TOGGLE_DIR");
    std::filesystem::remove_all(directory);
  }
  void file(std::string const& text) const { std::ofstream(directory / "Lib.json") << text; }
  /// The state under both defaults, and what was said about it.
  std::string state() const {
    testing::internal::CaptureStderr();
    bool const off = getToggleState("Lib.json", "Her", false);
    std::string const said = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    bool const on = getToggleState("Lib.json", "Her", true);
    testing::internal::GetCapturedStderr();
    return std::string(off == on ? (on ? "on" : "off") : "default") + (said.empty() ? "" : ", complains");
  }

  std::filesystem::path const directory =
      std::filesystem::path(testing::TempDir()) / ("toggles-" + std::to_string(getpid()));
};

TEST_F(ToggleTest, comesFromItsFileOrKeepsItsDefault) {
  EXPECT_EQ(state(), "default");
  file(R"({"Her": true})");
  EXPECT_EQ(state(), "on");
  file(R"({"Other": true, "Her": false})");
  EXPECT_EQ(state(), "off");
  file(R"({"Other": true})");
  EXPECT_EQ(state(), "default");
  unsetenv("TESSEL_TOGGLE_DIR");
  file(R"({"Her": true})");
  EXPECT_EQ(state(), "default");
}

TEST_F(ToggleTest, aFileThatIsWrongIsReportedAndRefusedByTheAgent) {
  for (char const* text : {"", "{", "[true]", R"({"Her": 1})", R"({"Her": "true"})", R"({"Her": true} x)",
                           R"({"Her": true, "Her": false})"}) {
    file(text);
    EXPECT_EQ(state(), "default, complains") << text;
    EXPECT_THROW(Kiln::togglesCheck(), Kiln::InputError) << text;
  }
  file(std::string(1'000'000, '['));
  EXPECT_EQ(state(), "default, complains");
  file(R"({"Her": true})");
  EXPECT_NO_THROW(Kiln::togglesCheck());
  setenv("TESSEL_TOGGLE_DIR", (directory / "Lib.json").c_str(), 1);
  EXPECT_THROW(Kiln::togglesCheck(), Kiln::InputError);
}

TEST_F(ToggleTest, anOverrideGoesFirstUntilItIsTakenAway) {
  file(R"({"Her": true})");
  Kiln::toggleOverrideIs("Her", false);
  EXPECT_EQ(state(), "off");
  Kiln::toggleOverrideIs("Her", std::nullopt);
  EXPECT_EQ(state(), "on");
}

}  // namespace
