#pragma once

#include <rapidjson/document.h>

#include <compare>
#include <string>
#include <vector>

#include "host/import/Choices.h"
#include "host/import/Fields.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// The captures that a state document is built from. Not owned.
struct Captures {
  JsonDocument const* links = nullptr;
  JsonDocument const* vxlanLinks = nullptr;
  std::strong_ordering vxlanLinksAge = std::strong_ordering::equal;  ///< Against `links`; greater: newer.
  JsonDocument const* fdb = nullptr;                                 ///< Null: no VTEP is known.
  JsonDocument const* routes = nullptr;                              ///< Null: no VTEP can be reached.
  JsonDocument const* nextHops = nullptr;
  JsonDocument const* vlans = nullptr;        ///< VLANs of the bridges' ports.
  JsonDocument const* vlanTunnels = nullptr;  ///< VNIs of the bridges' VLANs.
  JsonDocument const* neighbours = nullptr;   ///< Null: no next hop is resolved.
  JsonDocument const* rules = nullptr;        ///< Policy rules of IPv4.
  JsonDocument const* rules6 = nullptr;       ///< Those of IPv6.
  JsonDocument const* settings = nullptr;     ///< Whether routes over links without carrier are used.
  bool fdbIsNewer = false;                    ///< Than the links.
  Choices* choices = nullptr;                 ///< Never null.
  std::string nextHopsName;                   ///< The next hops' file, for errors where it is missing.
  std::string directory;                      ///< Where missing files are expected; ends with a separator.
  std::string host;                           ///< Its name; empty: unknown.
  std::vector<Warning> problems;              ///< What is wrong with the files as such.
};

/// The state document of the switch: tunnel interface, VNIs, tunnels, groups of VTEPs and flood lists with their
/// adjacencies, interfaces and ports, and with notes of what is passed over. The same captures always result in the
/// same document, member for member. Throws InputError.
rapidjson::Document stateDocument(Captures const& captures);

}  // namespace Host::Import
