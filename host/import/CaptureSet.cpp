#include "host/import/CaptureSet.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <system_error>
#include <utility>

#include "host/import/StateDocument.h"

namespace Host {

namespace {

constexpr std::array readCaptures{"ip-link.json",     "ip-link-vxlan.json", "ip-route-all.json",
                                  "ip-nexthop.json",  "ip-neigh.json",      "bridge-fdb.json",
                                  "bridge-vlan.json", "ip-rule.json",       "ip-rule6.json",
                                  "sysctl.json",      "manifest.json",      "bridge-vlan-tunnelshow.json"};
/// Part of a capture, but nothing in them is needed; a kernel can leave some of them cut short.
constexpr std::array otherCaptures{"ip-addr.json", "bridge-link.json", "bridge-vni.json", "frr-ip-route.json",
                                   "frr-ipv6-route.json"};

constexpr auto manifestName = "manifest.json";
constexpr auto manifestFormat = "tessel-capture/1";

/// Files that every switch needs, and what follows where one is missing. Others are missed where something refers to
/// them.
constexpr std::array<std::pair<char const*, char const*>, 4> needed{{
    {"ip-link.json", "bridges and ports are unknown: no next hop has a port"},
    {"bridge-fdb.json", "no VTEP is known"},
    {"ip-route-all.json", "no VTEP has a route"},
    {"ip-neigh.json", "no next hop is resolved"},
}};

constexpr auto neededFiles =
    "expected captures: ip-link.json or ip-link-vxlan.json, bridge-fdb.json, and for the underlay "
    "ip-route-all.json, ip-nexthop.json, ip-neigh.json, and for the VLANs bridge-vlan.json, "
    "bridge-vlan-tunnelshow.json";

/// Whether a file holds nothing but "[": what a kernel without VLANs in its bridges prints about them.
bool isCutShort(std::filesystem::path const& file) {
  std::ifstream in(file);
  std::string word, rest;
  return in >> word && word == "[" && !(in >> rest);
}

/// The file, as programs of the kernel's tools print it; nothing, and a warning, where it is empty or can't be read.
std::shared_ptr<Kiln::JsonDocument const> readCapture(std::filesystem::path const& path, std::optional<Warning>& why) {
  auto const name = path.string();
  std::error_code error;
  auto const unread = [&](char const* kind, std::string const& problem) {
    why = Warning{kind, name, "", problem + ", read as if it were missing", ""};
    return nullptr;
  };
  std::ifstream in(path);
  // A directory can be opened, but not read.
  if (!in || std::filesystem::is_directory(path, error)) return unread("unreadable-file", "the file can't be read");
  if ((in >> std::ws).peek() == std::char_traits<char>::eof()) return unread("empty-file", "the file is empty");
  Kiln::JsonDocument::Limits limits;
  limits.lenient = true;
  bool const nothing = path.filename().string().starts_with("bridge-vlan") && isCutShort(path);
  return std::make_shared<Kiln::JsonDocument const>(nothing ? Kiln::JsonDocument::parse("[]", name)
                                                            : Kiln::JsonDocument::read(name, limits));
}

void requireReadable(std::filesystem::path const& directory) {
  std::error_code error;
  if (!std::filesystem::is_directory(directory, error)) {
    throw Kiln::InputError(directory.string(), "", "no directory there", "expected a directory of captures");
  }
  std::filesystem::directory_iterator const list(directory, error);
  if (error) {
    throw Kiln::InputError(directory.string(), "", "nothing that can be read (" + error.message() + ")",
                           "expected a directory of captures");
  }
}

}  // namespace

CaptureSet::Directory CaptureSet::read(std::filesystem::path const& directory) const {
  requireReadable(directory);
  std::error_code error;
  auto const has = [&](char const* name) { return std::filesystem::exists(directory / name, error); };
  Directory read;
  bool seen = std::any_of(otherCaptures.begin(), otherCaptures.end(), has);
  for (std::string const name : readCaptures) {
    if (!has(name.c_str())) continue;
    seen = true;
    std::optional<Warning> why;
    if (auto file = readCapture(directory / name, why)) read.files[name] = {std::move(file), overlays_ + 1};
    if (why) read.unread[name] = *why;
  }
  if (!seen) {
    throw Kiln::InputError(directory.string(), "", "no capture in the directory", neededFiles);
  }
  return read;
}

void CaptureSet::overlay(std::filesystem::path const& directory) {
  auto read = this->read(directory);
  if (auto const manifest = read.files.find(manifestName); manifest != read.files.end()) {
    manifest_ = manifestOf(directory, *manifest->second.file);
  }
  read.files.merge(files_);  // keeps what was just read
  files_.swap(read.files);
  unread_ = std::move(read.unread);
  directory_ = directory;
  ++overlays_;
}

CaptureSet::Manifest CaptureSet::manifestOf(std::filesystem::path const& directory,
                                            Kiln::JsonDocument const& document) {
  auto const format = document.root().member("format");
  if (format.text() != manifestFormat) format.fail(std::string("expected \"") + manifestFormat + '"');
  Manifest manifest;
  if (auto const host = document.root().find("host")) manifest.host = host->text();
  auto const files = document.root().find("files");
  if (!files) return manifest;
  files->eachMember([&](std::string_view name, Kiln::JsonIn const& entry) {
    auto const status = entry.member("status");
    bool const isRead = std::find(readCaptures.begin(), readCaptures.end(), name) != readCaptures.end();
    if (!isRead || status.unsignedNumber(0, 255) == 0) return;
    manifest.failures.push_back(
        {"command-failed", (directory / name).string(), "",
         "not captured: \"" + std::string(entry.member("command").text()) + "\" ended with exit code " + status.shown(),
         ""});
  });
  return manifest;
}

std::vector<Warning> CaptureSet::problems() const {
  auto problems = manifest_.failures;
  for (auto const& [name, why] : unread_) problems.push_back(why);
  for (auto const& [name, consequence] : needed) {
    if (!file(name)) problems.push_back({"missing-file", pathOf(name), "", "no such file", consequence});
  }
  // What the file would have said is said once.
  for (auto const& [name, why] : unread_) {
    auto const missing = std::find_if(problems.begin(), problems.end(), [&file = why.file](Warning const& each) {
      return each.kind == "missing-file" && each.file == file;
    });
    if (missing == problems.end()) continue;
    std::find(problems.begin(), problems.end(), why)->consequence = missing->consequence;
    problems.erase(missing);
  }
  return problems;
}

Kiln::JsonDocument const* CaptureSet::file(std::string const& name) const {
  auto const held = files_.find(name);
  return held == files_.end() ? nullptr : held->second.file.get();
}

int CaptureSet::overlayOf(std::string const& name) const {
  auto const held = files_.find(name);
  return held == files_.end() ? 0 : held->second.overlay;
}

rapidjson::Document CaptureSet::stateDocument() const {
  Choices none;
  return stateDocument(none);
}

rapidjson::Document CaptureSet::stateDocument(Choices& choices) const {
  Import::Captures captures{.links = file("ip-link.json"),
                            .vxlanLinks = file("ip-link-vxlan.json"),
                            .fdb = file("bridge-fdb.json"),
                            .routes = file("ip-route-all.json"),
                            .nextHops = file("ip-nexthop.json"),
                            .vlans = file("bridge-vlan.json"),
                            .vlanTunnels = file("bridge-vlan-tunnelshow.json"),
                            .neighbours = file("ip-neigh.json"),
                            .rules = file("ip-rule.json"),
                            .rules6 = file("ip-rule6.json"),
                            .settings = file("sysctl.json"),
                            .choices = &choices,
                            .nextHopsName = pathOf("ip-nexthop.json"),
                            .directory = pathOf(""),
                            .host = manifest_.host,
                            .problems = problems()};
  if (!captures.links && !captures.vxlanLinks && !captures.fdb) {
    throw Kiln::InputError(pathOf("ip-link.json"), "", "no such file",
                           "expected the links of the switch, here or in ip-link-vxlan.json, or bridge-fdb.json");
  }
  captures.fdbIsNewer =
      overlayOf("bridge-fdb.json") > std::max(overlayOf("ip-link.json"), overlayOf("ip-link-vxlan.json"));
  captures.vxlanLinksAge = overlayOf("ip-link-vxlan.json") <=> overlayOf("ip-link.json");
  return Import::stateDocument(captures);
}

}  // namespace Host
