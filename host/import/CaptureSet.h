#pragma once

#include <rapidjson/document.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/import/Choices.h"
#include "host/notes/Warnings.h"
#include "platform/kiln/JsonIn.h"

namespace Host {

/// The captures of one switch, file by file: what `ip -j` and `bridge -j` print on a Linux VTEP.
///
/// A later directory replaces the files that it holds; what it does not hold is as it was. Copies share the files,
/// which never change.
class CaptureSet {
 public:
  /// Reads the captures of a directory. One that is empty or can't be read is as one that is missing, with a warning.
  /// Throws InputError where the directory cannot be read, holds no capture, has a manifest of another format, or one
  /// of the captures is no JSON; the set is then as before.
  void overlay(std::filesystem::path const& directory);

  /// The state that the switch has by these captures:
  /// - "interface/status/eth/vxlan": the tunnel interface "Vxlan1" with source addresses and UDP port;
  /// - "hardware/tessel/tunnel/vxlan/helperVniConfig": a local mapping for each VLAN that has a VNI;
  /// - ".../configDir/vxlanTunnel": a tunnel for each VTEP that a MAC address is behind, with the adjacencies that lead
  ///   there. No `adjId`: it cannot be reached;
  /// - ".../vxlan/vaneVtepGroupConfigDir": the groups of VTEPs that MAC addresses are behind, under the kernel's ids,
  /// and
  ///   ".../configDir/vxlanMemberTunnel": a tunnel for each of their members;
  /// - "bridging/l2Rib/floodOutput": the VTEPs that each VLAN is flooded to; "vxlan/version2/vtepStatusDir" and
  ///   ".../vxlanHwHerTunnel": their adjacencies, none for one that cannot be reached;
  /// - "vane/l3IntfTable" and "hardware/tessel/port/config": numbers of interfaces and ports.
  /// - "notes": warnings of what is passed over, values that a kernel accepts and a switch cannot use.
  /// `choices` are those that the user has made. Throws InputError where there are neither links nor a forwarding
  /// database, or a value or a choice cannot be used.
  rapidjson::Document stateDocument(Choices& choices) const;
  rapidjson::Document stateDocument() const;

 private:
  struct Manifest {
    std::string host;
    std::vector<Warning> failures;  ///< Of commands.
  };
  struct Held {
    std::shared_ptr<Kiln::JsonDocument const> file;
    int overlay = 0;  ///< The number of the directory that it came with.
  };
  struct Directory {
    std::map<std::string, Held> files;
    std::map<std::string, Warning> unread;  ///< Why a file that exists is not read, by name.
  };
  Directory read(std::filesystem::path const& directory) const;
  static Manifest manifestOf(std::filesystem::path const& directory, Kiln::JsonDocument const& document);
  /// What files that the switch needs would have said, and what is wrong with the manifest's commands.
  std::vector<Warning> problems() const;
  Kiln::JsonDocument const* file(std::string const& name) const;
  int overlayOf(std::string const& name) const;
  std::string pathOf(std::string const& name) const { return (directory_ / name).string(); }

  std::map<std::string, Held> files_;
  std::map<std::string, Warning> unread_;  ///< Of the last directory.
  Manifest manifest_;                      ///< The last one that was read.
  std::filesystem::path directory_;        ///< The last one.
  int overlays_ = 0;
};

}  // namespace Host
