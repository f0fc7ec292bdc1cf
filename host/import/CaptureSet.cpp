#include "host/import/CaptureSet.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>

#include "host/import/StateDocument.h"

namespace Host {

namespace {

constexpr std::array readCaptures{
    "ip-link.json",  "ip-link-vxlan.json", "ip-route-all.json", "ip-nexthop.json",
    "ip-neigh.json", "bridge-fdb.json",    "bridge-vlan.json",  "bridge-vlan-tunnelshow.json"};
/// Part of a capture, but nothing in them is needed; a kernel can leave some of them cut short.
constexpr std::array otherCaptures{"ip-addr.json", "bridge-link.json", "bridge-vni.json"};

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

}  // namespace

void CaptureSet::overlay(std::filesystem::path const& directory) {
  std::error_code error;
  if (!std::filesystem::is_directory(directory, error)) {
    throw Kiln::InputError(directory.string(), "", "no directory there", "expected a directory of captures");
  }
  auto const has = [&](char const* name) { return std::filesystem::exists(directory / name, error); };
  std::map<std::string, Held> read;
  bool seen = std::any_of(otherCaptures.begin(), otherCaptures.end(), has);
  for (std::string const name : readCaptures) {
    if (!has(name.c_str())) continue;
    seen = true;
    if (name.starts_with("bridge-vlan") && isCutShort(directory / name)) continue;
    read[name] = {std::make_shared<Kiln::JsonDocument const>(Kiln::JsonDocument::read(directory / name)),
                  overlays_ + 1};
  }
  if (!seen) {
    throw Kiln::InputError(directory.string(), "", "no capture in the directory", neededFiles);
  }
  read.merge(files_);  // keeps what was just read
  files_.swap(read);
  directory_ = directory;
  ++overlays_;
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
                            .choices = &choices,
                            .nextHopsName = pathOf("ip-nexthop.json")};
  if (!captures.links && !captures.vxlanLinks) {
    throw Kiln::InputError(pathOf("ip-link.json"), "", "no such file",
                           "expected the links of the switch, here or in ip-link-vxlan.json");
  }
  if (!captures.fdb) {
    throw Kiln::InputError(pathOf("bridge-fdb.json"), "", "no such file",
                           "expected the forwarding database of the switch");
  }
  captures.fdbIsNewer =
      overlayOf("bridge-fdb.json") > std::max(overlayOf("ip-link.json"), overlayOf("ip-link-vxlan.json"));
  captures.vxlanLinksAge = overlayOf("ip-link-vxlan.json") <=> overlayOf("ip-link.json");
  return Import::stateDocument(captures);
}

}  // namespace Host
