#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "host/import/CaptureSet.h"
#include "host/notes/Notes.h"
#include "tests/support/Cases.h"

// The next hops of generated hosts, as the import finds them in a capture and as the host's kernel has them.

namespace Host::Test {

namespace {

using std::filesystem::path;

constexpr unsigned samples = 256;
/// Of a share of the samples; more than five standard deviations.
constexpr double tolerance = 0.16;

/// Of one VTEP: how often each next hop was used, or its weight, "NEIGHBOUR@DEVICE"; or why there is none.
struct Ways {
  std::map<std::string, unsigned> hops;
  std::string why;

  double share(std::string const& hop) const {
    double sum = 0;
    for (auto const& [each, count] : hops) sum += count;
    return hops.contains(hop) ? hops.at(hop) / sum : 0;
  }
  std::string text() const {
    std::string text = why;
    for (auto const& [hop, count] : hops) text += (text.empty() ? "" : " ") + hop + '*' + std::to_string(count);
    return text;
  }
};
/// By VTEP.
using Truth = std::map<std::string, Ways>;

struct Output {
  int code;
  std::string text;
};
Output shell(std::string const& command) {
  auto const pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
  std::string text;
  std::array<char, 4096> buffer{};
  while (auto const read = fread(buffer.data(), 1, buffer.size(), pipe)) text.append(buffer.data(), read);
  return {pclose(pipe), text};
}

/// One that is removed at the end.
class Namespace {
 public:
  // A process may be allowed to make one and not to run anything in it.
  Namespace()
      : created_(shell("ip netns add " + name_).code == 0),
        usable_(shell("ip netns exec " + name_ + " true").code == 0) {}
  ~Namespace() {
    if (created_) shell("ip netns del " + name_);
  }
  Namespace(Namespace const&) = delete;
  Namespace& operator=(Namespace const&) = delete;

  /// Settings, and commands of `ip` in one go.
  Output runAll(std::vector<std::string> const& lines) const {
    std::string settings, commands;
    for (auto const& line : lines)
      (line.starts_with("net.") ? settings : commands) += line.starts_with("net.") ? " " + line : line + "\n";
    auto const set = run(settings.substr(1));
    return set.code != 0 ? set : shell("ip -n " + name_ + " -batch - <<'END'\n" + commands + "END\n");
  }

  bool usable() const { return usable_; }
  std::string const& name() const { return name_; }
  /// A line of hosts.txt: a setting, or an object of `ip` or `bridge` with its command.
  Output run(std::string const& line) const {
    if (line.starts_with("net.")) return shell("ip netns exec " + name_ + " sysctl -qw " + line);
    return shell((line.starts_with("fdb ") ? "bridge -n " : "ip -n ") + name_ + ' ' + line);
  }

 private:
  std::string name_ = "tessel" + std::to_string(getpid());
  bool created_;
  bool usable_;
};

/// A name and the lines that set it up; the VTEPs, with the device that their VXLAN device is bound to.
struct TestHost {
  std::string name;
  std::vector<std::string> lines;
  std::vector<std::pair<std::string, std::string>> vteps;
};

std::vector<TestHost> hosts() {
  std::vector<TestHost> all;
  for (auto const& [given, result] : Support::cases("routes/hosts.txt")) {
    auto& host = all.emplace_back();
    for (auto const& line : given) {
      std::istringstream words(line);
      std::string first, vtep, device;
      words >> first >> vtep >> device;
      if (first == "host") host.name = vtep;
      if (first == "vtep") host.vteps.emplace_back(vtep, device);
      if (first != "host" && first != "vtep") host.lines.push_back(line);
    }
  }
  return all;
}

bool isV6(std::string const& address) { return address.find(':') != address.npos; }

void addVtep(Namespace const& ns, std::string const& vtep, std::string const& bound, unsigned number) {
  auto const device = "vx" + std::string(isV6(vtep) ? "6" : "4") + bound;
  auto const local = isV6(vtep) ? "2001:db8:ff::1" : "10.255.0.1";
  ns.run("link add " + device + " type vxlan id " + std::to_string(100 + number) + " dstport 4789 local " + local +
         (bound.empty() ? "" : " dev " + bound));
  ns.run("link set " + device + " up");
  auto const mac = "02:00:00:00:00:" + std::to_string(10 + number);
  auto const added = ns.run("fdb append " + mac + " dev " + device + " dst " + vtep + " self");
  EXPECT_EQ(added.code, 0) << added.text;
}

/// What a line that `ip route get` printed says; empty: nothing.
std::string hopOf(std::string const& line) {
  std::istringstream words(line);
  std::string to, word, via, dev;
  words >> to;
  if (to == "local") return "local";
  bool encap = false;
  while (words >> word) {
    if (word == "encap") encap = true;
    if (word == "via") words >> via;
    if (via == "inet6") words >> via;
    if (word == "dev") words >> dev;
  }
  if (dev.empty()) return "";
  if (encap || dev.starts_with("vx")) return encap ? "encap" : "vxlan";
  return (via.empty() ? to : via) + '@' + dev;
}

Ways asked(Namespace const& ns, std::string const& vtep, std::string const& bound) {
  auto const batch = std::filesystem::temp_directory_path() / ns.name();
  std::ofstream out(batch);
  for (unsigned port = 0; port < samples; ++port)
    out << "route get " << vtep << " from " << (isV6(vtep) ? "2001:db8:ff::1" : "10.255.0.1")
        << (bound.empty() ? "" : " oif " + bound) << " ipproto udp dport 4789 sport " << 30000 + port << '\n';
  out.close();
  std::istringstream printed(shell("ip -n " + ns.name() + " -force -batch " + batch.string()).text);
  remove(batch);
  Ways ways;
  for (std::string line; std::getline(printed, line);) {
    constexpr std::string_view error = "RTNETLINK answers: ";
    if (line.starts_with(error)) ways.why = line.substr(error.size());
    if (line.starts_with(' ') || line.starts_with(error) || line.starts_with("Command")) continue;
    auto const hop = hopOf(line);
    if (hop.find('@') != hop.npos) ++ways.hops[hop];
    if (hop.find('@') == hop.npos && !hop.empty()) ways.why = hop;
  }
  if (!ways.hops.empty()) ways.why.clear();
  return ways;
}

/// Those that the import finds, with the reasons that it notes.
Truth imported(path const& directory) {
  CaptureSet set;
  set.overlay(directory);
  Stateway::StateDocument const state(Kiln::JsonDocument(set.stateDocument(), "state"));
  auto const notes = notesOf(state);
  auto const& config = state.root().value()["stateway"]["hardware/tessel/tunnel/configDir/vxlanTunnel"];
  Truth truth;
  for (auto const& [name, tunnel] : config["tunnel"].GetObject()) {
    auto& ways = truth[name.GetString()];
    if (!tunnel.HasMember("adjId")) {
      ways.why = notes.unreachable.at(*Kiln::fromText<Meshal::IpGenAddr>(std::string_view(name.GetString())));
      continue;
    }
    auto const id = std::to_string(tunnel["adjId"].GetUint());
    for (auto const& hop : config["adjacency"][id.c_str()]["nextHops"].GetArray())
      ++ways.hops[hop["addr"].GetString() + std::string("@") + hop["l3Intf"].GetString()];
  }
  return truth;
}

/// What the kernel says where the import has this reason.
std::string errorFor(std::string const& why) {
  static std::vector<std::pair<std::string, std::string>> const errors{
      {"blackhole ", "Invalid argument"},        {"prohibit ", "Permission denied"},
      {"unreachable route", "No route to host"}, {"unreachable rule", "Network is unreachable"},
      {"no route", "Network is unreachable"},    {"link down", "Network is unreachable"},
      {"an address of this host", "local"},      {"route with encapsulation", "encap"},
      {"route over the VXLAN device", "vxlan"}};
  for (auto const& [reason, error] : errors) {
    if (why.starts_with(reason)) return error;
  }
  return "";
}

void compare(std::string const& host, Truth const& truth, Truth const& found) {
  for (auto const& [vtep, kernel] : truth) {
    if (!found.contains(vtep)) {
      ADD_FAILURE() << host << ": " << vtep << " is no tunnel";
      continue;
    }
    auto const& ours = found.at(vtep);
    auto const text = host + ": " + vtep + ": the kernel has " + kernel.text() + ", the import " + ours.text();
    EXPECT_EQ(kernel.why, errorFor(ours.why)) << text;
    EXPECT_EQ(kernel.hops.size(), ours.hops.size()) << text;
    for (auto const& [hop, count] : kernel.hops) EXPECT_NEAR(kernel.share(hop), ours.share(hop), tolerance) << text;
  }
}

/// Writes capture and truth where TESSEL_RECORD names a directory, for `recordedHostsAreRead`.
void record(std::string const& host, path const& capture, Truth const& truth) {
  auto const* directory = std::getenv("TESSEL_RECORD");
  if (!directory) return;
  std::ofstream out(path(directory) / (host + ".json"));
  out << "{\"truth\":{";
  char const* separator = "";
  for (auto const& [vtep, ways] : truth) {
    out << separator << '"' << vtep << "\":{\"why\":\"" << ways.why << "\",\"hops\":{";
    separator = "";
    for (auto const& [hop, count] : ways.hops) out << separator << '"' << hop << "\":" << count, separator = ",";
    out << "}}", separator = ",";
  }
  out << "},\"files\":{", separator = "";
  for (auto const name :
       {"ip-link", "ip-route-all", "ip-nexthop", "ip-neigh", "bridge-fdb", "ip-rule", "ip-rule6", "sysctl"}) {
    std::ifstream in(capture / (std::string(name) + ".json"));
    out << separator << '"' << name << ".json\":" << in.rdbuf(), separator = ",";
  }
  out << "}}\n";
}

/// A directory of a test's own.
class Routes : public testing::Test {
 protected:
  Routes() { std::filesystem::create_directories(base_); }
  ~Routes() override { std::filesystem::remove_all(base_); }
  path const base_ = std::filesystem::temp_directory_path() / ("tessel-routes-" + std::to_string(getpid()));
};

}  // namespace

TEST_F(Routes, ofGeneratedHostsAreTheKernels) {
  if (shell("ip -V").code != 0) GTEST_SKIP() << "iproute2 is not installed";
  auto all = hosts();
  auto const basis = all.front().lines;
  all.erase(all.begin());
  unsigned tried = 0;
  for (auto const& host : all) {
    Namespace const ns;
    if (!ns.usable()) GTEST_SKIP() << "no network namespaces here; the recorded hosts are read";
    std::string unable;
    auto const ready = ns.runAll(basis);
    EXPECT_EQ(ready.code, 0) << ready.text;
    for (auto const& line : host.lines) {
      bool const optional = line.starts_with("try ");
      auto const ran = ns.run(optional ? line.substr(4) : line);
      if (ran.code != 0 && optional) unable = line + ": " + ran.text;
      if (!unable.empty()) break;
      EXPECT_EQ(ran.code, 0) << host.name << ": " << line << ": " << ran.text;
    }
    if (!unable.empty()) {
      std::cout << "[ skipped  ] host " << host.name << ": " << unable;
      continue;
    }
    unsigned number = 0;
    for (auto const& [vtep, bound] : host.vteps) addVtep(ns, vtep, bound, ++number);
    Truth truth;
    for (auto const& [vtep, bound] : host.vteps) truth[vtep] = asked(ns, vtep, bound);
    auto const captured =
        shell(TESSEL_SOURCE_DIR "/scripts/capture " + (base_ / host.name).string() + " --netns " + ns.name());
    EXPECT_EQ(captured.code, 0) << captured.text;
    compare(host.name, truth, imported(base_ / host.name));
    record(host.name, base_ / host.name, truth);
    ++tried;
  }
  EXPECT_GE(tried, 30U);
}

TEST_F(Routes, ofRecordedHostsAreTheKernels) {
  unsigned read = 0;
  for (auto const& file : std::filesystem::directory_iterator(TESSEL_SOURCE_DIR "/tests/data/routes/recorded")) {
    Kiln::JsonDocument::Limits limits;
    limits.lenient = true;
    auto const document = Kiln::JsonDocument::read(file.path().string(), limits);
    auto const directory = base_ / file.path().stem();
    std::filesystem::create_directories(directory);
    document.root().member("files").eachMember([&](std::string_view name, Kiln::JsonIn const& content) {
      rapidjson::StringBuffer text;
      rapidjson::Writer<rapidjson::StringBuffer> writer(text);
      content.value().Accept(writer);
      std::ofstream(directory / name) << text.GetString();
    });
    Truth truth;
    document.root().member("truth").eachMember([&](std::string_view vtep, Kiln::JsonIn const& ways) {
      auto& into = truth[std::string(vtep)];
      into.why = ways.member("why").text();
      ways.member("hops").eachMember([&](std::string_view hop, Kiln::JsonIn const& count) {
        into.hops[std::string(hop)] = static_cast<unsigned>(count.unsignedNumber(1, samples));
      });
    });
    compare(file.path().stem().string(), truth, imported(directory));
    ++read;
  }
  EXPECT_GE(read, 10U);
}

}  // namespace Host::Test
