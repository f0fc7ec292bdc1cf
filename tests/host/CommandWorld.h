#pragma once

#include <gmock/gmock.h>
#include <rapidjson/document.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "host/commands/CommandLine.h"
#include "tests/support/AgentWish.h"

namespace Host::Test {

/// What a command printed and how it ended.
struct Ran {
  int code;
  std::string out;
  std::string err;

  /// The JSON object that was printed.
  rapidjson::Document json() const {
    rapidjson::Document document;
    document.Parse(out.c_str());
    EXPECT_FALSE(document.HasParseError()) << out;
    return document;
  }
};

inline Ran run(std::vector<std::string> const& arguments) {
  std::ostringstream out, err;
  int const code = runCommandLine(arguments, out, err);
  return {code, out.str(), err.str()};
}

inline std::string capture(std::string const& name) {
  return (std::filesystem::path(TESSEL_SOURCE_DIR) / "tests/data/captures" / name).string();
}

/// Whether `text` contains the parts in this order.
inline testing::AssertionResult inOrder(std::string const& text, std::vector<std::string> const& parts) {
  std::size_t at = 0;
  for (auto const& part : parts) {
    auto const found = text.find(part, at);
    if (found == std::string::npos) return testing::AssertionFailure() << part << " is not in its place in\n" << text;
    at = found + 1;
  }
  return testing::AssertionSuccess();
}

/// One paragraph of a file below tests/data/input: what is given, a line each, and the lines behind "= " and "! ",
/// which say the result and its warnings. Lines that begin with "#" are comments.
struct Case {
  std::vector<std::string> given;
  std::string result;
};

inline std::vector<Case> cases(std::string const& name) {
  std::ifstream in(TESSEL_SOURCE_DIR "/tests/data/input/" + name);
  EXPECT_TRUE(in) << name;
  std::vector<Case> all;
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with('#')) continue;
    if (!line.empty() && !inside) all.emplace_back();
    inside = !line.empty();
    bool const result = line.starts_with("= ") || line.starts_with("! ");
    if (inside && result) all.back().result += line + '\n';
    if (inside && !result) all.back().given.push_back(line);
  }
  return all;
}

/// Files of a test's own, removed at its end.
class Files : public testing::Test {
 protected:
  ~Files() override { std::filesystem::remove_all(base_); }

  std::string file(std::string const& name, std::string const& text) const {
    std::filesystem::create_directories((base_ / name).parent_path());
    std::ofstream(base_ / name) << text;
    return (base_ / name).string();
  }
  std::filesystem::path const& base() const { return base_; }

 private:
  std::filesystem::path base_ =
      std::filesystem::temp_directory_path() /
      ("tessel-" + std::to_string(getpid()) + testing::UnitTest::GetInstance()->current_test_info()->name());
};

/// A wish with the local VTEP 10.255.0.1, UDP port 4789, adjacency 7 over uplinks 1 and 2, and VTEPs 2 to `last` over
/// it.
inline AgentTest::Wish wishTo(unsigned last) {
  AgentTest::Wish wish;
  wish.localVtep = AgentTest::vtep(1);
  wish.udpPort = 4789;
  wish.adjacencies[7] = {AgentTest::uplink(1), AgentTest::uplink(2)};
  for (unsigned n = 2; n <= last; ++n) wish.tunnels[{AgentTest::unicast, AgentTest::vtep(n)}].adjId = 7;
  return wish;
}

/// "VTEP adjacency", a `!` and the reason behind those that are not programmed, in the order of the output.
inline std::vector<std::string> tunnelsOf(rapidjson::Value const& report) {
  std::vector<std::string> lines;
  for (auto const& tunnel : report["tunnels"].GetArray()) {
    auto& line = lines.emplace_back(tunnel["vtep"].GetString());
    if (tunnel["adjId"].IsUint()) line += " " + std::to_string(tunnel["adjId"].GetUint());
    EXPECT_NE(tunnel["programmed"].GetBool(), tunnel["reason"].IsString());
    if (!tunnel["programmed"].GetBool()) line += std::string(" !") + tunnel["reason"].GetString();
  }
  return lines;
}

/// The keys of a table, in the order of the output.
inline std::vector<std::string> keysOf(rapidjson::Value const& report, char const* table) {
  std::vector<std::string> keys;
  for (auto const& entry : report["tables"][table]["entries"].GetArray()) keys.emplace_back(entry["key"].GetString());
  return keys;
}

}  // namespace Host::Test
