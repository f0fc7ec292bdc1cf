#pragma once

#include <rapidjson/document.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/notes/Warnings.h"
#include "platform/document/Document.h"
#include "platform/kiln/JsonOut.h"
#include "platform/meshal/IpGenAddr.h"

namespace Host {

/// What an import knows beyond the state: member "notes" of a state document. The agent does not act on it; reports say
/// it where they name a reason.
struct Notes {
  /// A VNI as the host has it.
  struct Vni {
    std::string device;            ///< Its VXLAN device.
    std::optional<unsigned> mtu;   ///< Of that device.
    std::optional<unsigned> vlan;  ///< That the host has for it; nothing where the import chose one.
    /// Why the MAC address of a router is missing that routes over the VNI lead to, by the router's VTEP.
    std::map<Meshal::IpGenAddr, std::string> missingRouters{};
  };

  std::string host;                                      ///< Its name; empty: unknown.
  std::vector<Warning> warnings;                         ///< In the order in which they occurred.
  std::map<Meshal::IpGenAddr, std::string> unreachable;  ///< Why no next hop leads to a VTEP, by VTEP.
  /// Why packets can't be sent to a neighbour, by its address and layer 3 interface.
  std::map<std::pair<Meshal::IpGenAddr, std::string>, std::string> unresolved;
  std::map<unsigned, Vni> vnis;  ///< By number.
};

/// The notes of a document; empty ones where it has none. Throws `InputError` for a wrong type or an unknown member.
Notes notesOf(Stateway::StateDocument const& document);

/// As the member "notes" of a document: an object with what there is.
rapidjson::Value notesValue(Notes const& notes, rapidjson::Document::AllocatorType& allocator);

/// Writes a member "warnings", an array. REQUIRES: inside an object.
void writeWarnings(Kiln::JsonWriter& json, std::vector<Warning> const& warnings);

}  // namespace Host
