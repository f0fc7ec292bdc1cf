#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Toggle.h"

namespace {

/// The state under both defaults, and whether something was said about it.
std::string state() {
  testing::internal::CaptureStderr();
  bool const off = getToggleState("Lib.json", "Her", false), on = getToggleState("Lib.json", "Her", true);
  auto const said = testing::internal::GetCapturedStderr();
  return std::string(off != on ? "default" : on ? "on" : "off") + (said.empty() ? "" : ", complains");
}

TEST(Toggle, isReadFromItsFileOrKeepsItsDefault) {
  auto const directory = std::filesystem::path(testing::TempDir()) / ("toggles-" + std::to_string(getpid()));
  std::filesystem::create_directories(directory);
  setenv("TESSEL_TOGGLE_DIR", directory.c_str(), 1);
  EXPECT_EQ(state(), "default") << "there is no file";
  for (auto const& [text, wanted] : std::vector<std::pair<std::string, std::string>>{
           {R"({"Other": true, "Her": false})", "off"},
           {R"({"Other": true})", "default"},
           {"{", "default, complains"},
           {"[true]", "default, complains"},
           {R"({"Her": 1})", "default, complains"},
           {R"({"Her": true, "Her": false})", "default, complains"},
           {R"({"Her": true})", "on"},
       }) {
    std::ofstream(directory / "Lib.json") << text;
    EXPECT_EQ(state(), wanted) << text;
    if (wanted.ends_with("complains")) {
      EXPECT_THROW(Kiln::togglesCheck(), Kiln::InputError) << text;
    }
  }
  Kiln::togglesCheck();
  for (bool const other : {false, true}) {
    Kiln::toggleOverrideIs("Her", other);
    EXPECT_EQ(state(), other ? "on" : "off");
  }
  Kiln::toggleOverrideIs("Her", std::nullopt);
  setenv("TESSEL_TOGGLE_DIR", (directory / "Lib.json").c_str(), 1);
  EXPECT_THROW(Kiln::togglesCheck(), Kiln::InputError) << "no directory";
  unsetenv("TESSEL_TOGGLE_DIR");
  EXPECT_EQ(state(), "default");
  Kiln::togglesCheck();
  std::filesystem::remove_all(directory);
}

}  // namespace
