#pragma once

#include <rapidjson/document.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/kiln/JsonIn.h"

namespace Host {

/// The captures of one switch, file by file: what `ip -j` and `bridge -j` print on a Linux VTEP.
///
/// A later directory replaces the files that it holds; what it does not hold is as it was. Copies share the files,
/// which never change.
class CaptureSet {
 public:
  /// Reads the captures of a directory. Throws InputError where it cannot be read, holds no capture, or one of them
  /// is no JSON; the set is then as before.
  void overlay(std::filesystem::path const& directory);

  /// The state that the switch has by these captures:
  /// - "interface/status/eth/vxlan": the tunnel interface "Vxlan1" with source addresses and UDP port;
  /// - ".../configDir/vxlanTunnel": a tunnel for each VTEP that a MAC address is behind, with the adjacencies that lead
  ///   there. No `adjId`: it cannot be reached;
  /// - "bridging/l2Rib/floodOutput": the VTEPs that each VLAN is flooded to; "vxlan/version2/vtepStatusDir" and
  ///   ".../vxlanHwHerTunnel": their adjacencies, none for one that cannot be reached;
  /// - "vane/l3IntfTable" and "hardware/tessel/port/config": numbers of interfaces and ports.
  /// Throws InputError where a capture that is needed is missing or a value cannot be used. Fills `warnings` with what
  /// is passed over, a line each: values that a kernel accepts and a switch cannot use.
  rapidjson::Document stateDocument(std::vector<std::string>& warnings) const;
  rapidjson::Document stateDocument() const;

 private:
  struct Held {
    std::shared_ptr<Kiln::JsonDocument const> file;
    int overlay = 0;  ///< The number of the directory that it came with.
  };
  Kiln::JsonDocument const* file(std::string const& name) const;
  int overlayOf(std::string const& name) const;
  std::string pathOf(std::string const& name) const { return (directory_ / name).string(); }

  std::map<std::string, Held> files_;
  std::filesystem::path directory_;  ///< The last one.
  int overlays_ = 0;
};

}  // namespace Host
