// The order of the house: who may include whom, read from the sources.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

fs::path const root = TESSEL_SOURCE_DIR;

/// The quoted includes of a file, in order.
std::vector<std::string> includesOf(fs::path const& file) {
  std::string const start = "#include \"";
  std::vector<std::string> includes;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(start))
      includes.push_back(line.substr(start.size(), line.find('"', start.size()) - start.size()));
  }
  return includes;
}

std::vector<fs::path> sourcesUnder(std::string const& folder) {
  std::vector<fs::path> files;
  if (!fs::exists(root / folder)) return files;
  for (auto const& entry : fs::recursive_directory_iterator(root / folder)) {
    auto const extension = entry.path().extension();
    if (extension == ".h" || extension == ".cpp") files.push_back(fs::relative(entry.path(), root));
  }
  return files;
}

std::string topFolder(fs::path const& path) { return path.begin()->string(); }

TEST(House, nothingIncludesWhatLiesAboveIt) {
  // The host finds the feature at run time, by the names of its types.
  std::map<std::string, std::set<std::string>> const mustNotInclude{
      {"platform", {"TesselVxlan", "host", "tests", "bench"}},
      {"TesselVxlan", {"host", "tests", "bench"}},
      {"host", {"TesselVxlan", "tests", "bench"}}};
  for (auto const& [folder, above] : mustNotInclude) {
    for (auto const& file : sourcesUnder(folder)) {
      for (auto const& include : includesOf(root / file)) {
        EXPECT_FALSE(above.contains(topFolder(include))) << file.string() << " includes " << include;
      }
    }
  }
}

TEST(House, platformFoldersIncludeOnlyLowerFloors) {
  // Each may include those before it.
  std::vector<std::string> const floors{
      "scree", "dovel", "kiln",     "anvil", "meshal",        "evpn",     "logicalfap", "brisk",  "vaulter", "bridging",
      "vxlan", "vane",  "stateway", "local", "kilnsharedmem", "document", "asic",       "tessel", "plugin"};
  auto const floorOf = [&](fs::path const& path) {
    auto const at = std::find(floors.begin(), floors.end(), std::next(path.begin())->string());
    return at == floors.end() ? -1 : at - floors.begin();
  };
  for (auto const& file : sourcesUnder("platform")) {
    auto const own = floorOf(file);
    EXPECT_GE(own, 0) << file.string() << " is in a folder without a floor";
    for (auto const& include : includesOf(root / file)) {
      if (topFolder(include) != "platform") continue;
      EXPECT_LE(floorOf(include), own) << file.string() << " includes " << include;
    }
  }
}

// So that a source which compiles shows that its header does too, with nothing before it.
TEST(House, aSourceIncludesItsOwnHeaderFirst) {
  for (auto const* folder : {"platform", "TesselVxlan", "host"}) {
    for (auto const& file : sourcesUnder(folder)) {
      auto const header = fs::path(file).replace_extension(".h");
      if (file.extension() != ".cpp" || !fs::exists(root / header)) continue;
      auto const includes = includesOf(root / file);
      EXPECT_TRUE(!includes.empty() && includes.front() == header.string()) << file.string();
    }
  }
}

}  // namespace
