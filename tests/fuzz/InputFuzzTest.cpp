#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>

#include "host/commands/CommandLine.h"
#include "host/defaults/DefaultLeaf.h"
#include "tests/fuzz/Mutator.h"

// Generated documents, captures, profiles and toggle files, through the command line. Each run has to end in an exit
// code, and where that says that an input cannot be used, with a message that names it and with nothing printed.
//
// TESSEL_FUZZ_COUNT and TESSEL_FUZZ_SEED say how many and where to begin; each input depends on its number alone.
// TESSEL_FUZZ_KIND=1 takes captures alone.

namespace FuzzTest {

namespace fs = std::filesystem;

std::uint64_t setting(char const* name, std::uint64_t byDefault) {
  char const* const text = std::getenv(name);
  return text ? std::stoull(text) : byDefault;
}

std::string contents(fs::path const& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The texts that inputs are made from.
struct Corpus {
  fs::path const source = TESSEL_SOURCE_DIR;
  std::vector<std::string> documents{std::string(Host::defaultLeaf()),
                                     contents(source / "tests/data/input/tunnels.json"),
                                     contents(source / "tests/data/input/flood.json")};
  std::vector<std::string> explained{"10.255.0.2", "10.255.0.3", "239.1.1.1", "fd00::2"};
  std::vector<std::string> chips{"cascaded", "flat", "flooding"};
  std::vector<std::string> profiles;
  std::vector<std::string> toggles{R"({"VaneVniSmInTesselL2":true})", R"({"Tessel4L3McastUnderlayHER":false})"};
  std::vector<std::map<std::string, std::string>> captures;
  std::string const rules =
      R"([{"priority":0,"src":"all","table":"local"},
          {"priority":100,"src":"all","dst":"10.255.0.0","dstlen":16,"table":"100","suppress_prefixlen":0},
          {"priority":200,"not":null,"src":"10.255.0.1","fwmark":"0x7","iif":"up1","action":"blackhole"},
          {"priority":300,"src":"all","goto":32766},{"priority":1000,"src":"all","l3mdev":null},
          {"priority":32766,"src":"all","table":"main"}])";
  std::string const settings =
      R"({"net.ipv4.conf.all.ignore_routes_with_linkdown":0,"net.ipv4.conf.up1.ignore_routes_with_linkdown":1})";

  Corpus() {
    for (auto const* name : {"cascaded", "flat", "flooding", "compact", "tiny"}) {
      profiles.push_back(contents(source / "profiles" / (std::string(name) + ".json")));
    }
    for (auto const* name : {"bridge-per-vni/leaf1", "single-vxlan-device", "vlan-aware-multihomed/leaf3",
                             "vlan-aware-multihomed/events/04-vtep-gone"}) {
      auto& files = captures.emplace_back();
      for (auto const& file : fs::directory_iterator(source / "tests/data/captures" / name)) {
        files[file.path().filename()] = contents(file.path());
      }
      files["ip-rule.json"] = rules;
      files["sysctl.json"] = settings;
      files["manifest.json"] = R"({"format":"tessel-capture/1","host":"leaf1","files":{"ip-link.json":{"status":0}}})";
      files["frr-ip-route.json"] = contents(source / "tests/data/frr/uplink-flap/frr-ip-route.json");
    }
  }
};

/// One generated call of the program.
class Case {
 public:
  Case(Corpus const& corpus, fs::path base, std::uint64_t seed)
      : corpus_(corpus), base_(std::move(base)), dice_(seed), mutator_(dice_) {
    fs::remove_all(base_);
    fs::create_directories(base_ / "toggles");
    build();
  }

  /// What is wrong with how the run ended; "" if nothing. Sets `code`.
  std::string run(int& code) const {
    std::ostringstream out, err;
    code = Host::runCommandLine(arguments_, out, err);
    auto const said = err.str();
    if (code < 0 || code > 2) return "exit code " + std::to_string(code);
    if (code != Host::kUnusable) return out.str().empty() ? "nothing printed" : "";
    if (!out.str().empty()) return "printed before the refusal: " + said;
    return said.find(base_.string()) == std::string::npos ? "names no file: " + said : "";
  }

 private:
  void build() {
    setenv("TESSEL_TOGGLE_DIR", (base_ / "toggles").c_str(), 1);
    auto const kind = setting("TESSEL_FUZZ_KIND", dice_.below(16));
    if (kind == 0) return arguments_.assign({"profiles", file("profile.json", corpus_.profiles)});
    if (kind == 1) return arguments_.assign({"import", "iproute2", captures("one"), captures("two")});
    if (kind == 4) return arguments_.assign({"diff", captures("one"), captures("two")});
    if (kind == 5) return arguments_.assign({"check", captures("one"), captures("two")});
    if (kind == 6) return arguments_.assign({"plan", "--profile", "tiny", "--from", captures("one"), captures("two")});
    if (kind == 7) return arguments_.assign({"diff", "--against", "frr", captures("one")});
    if (kind == 2) file("toggles/TesselL2.json", corpus_.toggles);
    if (kind == 2) return arguments_.assign({"run"});
    arguments_ = {"run", "--show", "summary,tunnels,tables,chip,logs,state"};
    if (kind == 3) arguments_ = {dice_.oneIn(2) ? "explain" : "graph", dice_.pick(corpus_.explained)};
    if (kind != 3 && dice_.oneIn(4)) arguments_.push_back("--show-each");
    addInputs();
    addOptions();
  }

  void addInputs() {
    for (auto inputs = 1 + dice_.below(3); inputs != 0; --inputs) {
      auto const name = "input" + std::to_string(inputs);
      arguments_.push_back(dice_.oneIn(3) ? captures(name) : file(name + ".json", corpus_.documents));
    }
  }

  void addOptions() {
    arguments_.push_back("--profile");
    arguments_.push_back(dice_.oneIn(4)   ? file("profile.json", corpus_.profiles)
                         : dice_.oneIn(4) ? dice_.pick(corpus_.chips)
                                          : "tiny");
    if (dice_.oneIn(2)) arguments_.insert(arguments_.end(), {"--completion", "deferred"});
    if (dice_.oneIn(4)) arguments_.insert(arguments_.end(), {"--format", "json"});
  }

  std::string file(std::string const& name, std::vector<std::string> const& texts) {
    std::ofstream(base_ / name, std::ios::binary) << mutator_.mutated(dice_.pick(texts), dice_.pick(texts));
    return (base_ / name).string();
  }

  /// A directory of captures in which a file or two are changed, rarely all.
  std::string captures(std::string const& name) {
    fs::create_directories(base_ / name);
    auto const& files = dice_.pick(corpus_.captures);
    auto const chance = dice_.oneIn(8) ? 1 : 3;
    for (auto const& [file, text] : files) {
      bool const changed = dice_.oneIn(static_cast<std::size_t>(chance));
      auto const other = std::next(files.begin(), static_cast<std::ptrdiff_t>(dice_.below(files.size())));
      if (dice_.oneIn(60)) continue;
      std::ofstream(base_ / name / file, std::ios::binary) << (changed ? mutator_.mutated(text, other->second) : text);
    }
    return (base_ / name).string();
  }

  Corpus const& corpus_;
  fs::path base_;
  Dice dice_;
  Mutator mutator_;
  std::vector<std::string> arguments_;
};

constexpr unsigned caseLimit = 60;  ///< Seconds.

/// What a process that runs cases shares with the one that watches it.
struct Progress {
  std::uint64_t seed;
  std::uint64_t codes[3];
  std::uint64_t wrong;
};

void runCases(Corpus const& corpus, fs::path const& base, std::uint64_t end, Progress& progress) {
  for (; progress.seed < end; ++progress.seed) {
    alarm(caseLimit);
    Case const one(corpus, base, progress.seed);
    int code = 0;
    auto const problem = one.run(code);
    ++(problem.empty() ? progress.codes[code] : progress.wrong);
    if (!problem.empty()) std::cerr << "seed " << progress.seed << ": " << problem << '\n';
  }
}

TEST(InputFuzz, everyInputEndsInAnExitCode) {
  auto const first = setting("TESSEL_FUZZ_SEED", 1);
  auto const end = first + setting("TESSEL_FUZZ_COUNT", 1000);
  auto const base = fs::temp_directory_path() / ("tessel-fuzz-" + std::to_string(getpid()));
  Corpus const corpus;
  auto* const memory = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  auto& progress = *new (memory) Progress{first, {}, 0};
  // In processes of their own, so that a crash or a hang ends one of them and is reported with its seed.
  while (progress.seed < end) {
    auto const process = fork();
    ASSERT_NE(process, -1) << std::strerror(errno);
    if (process == 0) {
      runCases(corpus, base, std::min(end, progress.seed + 1000), progress);
      std::exit(0);
    }
    int status = 0;
    waitpid(process, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) continue;
    ADD_FAILURE() << "seed " << progress.seed
                  << " crashed or hung: TESSEL_FUZZ_COUNT=1 TESSEL_FUZZ_SEED=" << progress.seed;
    ++progress.seed;
  }
  fs::remove_all(base);
  EXPECT_EQ(progress.wrong, 0U);
  std::cout << "exit codes 0: " << progress.codes[0] << ", 1: " << progress.codes[1] << ", 2: " << progress.codes[2]
            << '\n';
  // Most inputs have to get past the reader, or nothing behind it is tested.
  EXPECT_GT(progress.codes[0] + progress.codes[1], (end - first) / 10);
}

}  // namespace FuzzTest
