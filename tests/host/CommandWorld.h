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
#include "tests/support/Cases.h"

namespace Host::Test {

using Support::cases;

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

/// A file of the tests' data.
inline std::string data(std::string const& name) { return TESSEL_SOURCE_DIR "/tests/data/" + name; }
inline std::string capture(std::string const& name) { return data("captures/" + name); }

/// The arguments of a command line, which the program's name precedes; "@" is the directory of the tests' data.
inline std::vector<std::string> argumentsOf(std::string const& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    for (auto at = word.find('@'); at != word.npos; at = word.find('@')) word.replace(at, 1, data(""));
    words.push_back(word);
  }
  return {words.begin() + 1, words.end()};
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

}  // namespace Host::Test
