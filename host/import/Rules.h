#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/import/Address.h"
#include "host/import/Fields.h"
#include "host/import/Links.h"
#include "host/notes/Warnings.h"

namespace Host::Import {

/// What a host looks up before it sends a VXLAN packet.
struct Query {
  IpGenAddr to;
  std::optional<IpGenAddr> from;   ///< The local VTEP; nothing: the kernel chooses an address after the lookup.
  Device const* device = nullptr;  ///< That the packet is bound to; null: none.
};

/// The policy rules of a host, for packets that it sends itself: UDP to the port of the VXLAN devices, without a mark.
///
/// Without a capture of them they are those that a kernel starts with. A rule is skipped with a warning where it
/// depends on what varies from packet to packet, and where it has a member that is unknown here.
class Rules {
 public:
  /// What `ip -j rule show` and `ip -j -6 rule show` print; null: not captured.
  struct Files {
    JsonDocument const* v4 = nullptr;
    JsonDocument const* v6 = nullptr;
  };
  /// `links` is kept. Throws InputError where a value is of a wrong type.
  Rules(Files const& files, Links const& links, Warnings& warnings);

  /// What one rule does: looks a table up, or ends the search for a reason.
  struct Step {
    std::string table;  ///< A name for main, local and default, otherwise a number or the host's own name.
    std::string end;    ///< Why nothing leads to the address; empty: the table is looked up.
    std::optional<std::uint32_t> suppressedLength;  ///< Routes up to this length don't count.
    std::string suppressedGroup;                    ///< Nor those over devices of this group.
  };
  /// In the order in which they are tried.
  std::vector<Step> steps(Query const& query) const;
  /// Those that some query may look up.
  std::set<std::string> tables(bool v6) const;

 private:
  struct Rule {
    std::uint32_t priority = 0;
    bool invert = false;
    bool possible = true;  ///< Whether the members that do not depend on the query match.
    std::optional<Prefix> from;
    std::optional<Prefix> to;
    std::string oif;
    bool vrf = false;  ///< It looks up the table of the VRF that the packet is sent in.
    std::optional<std::uint32_t> jump;
    bool skip = false;
    Step step;
  };
  void read(JsonDocument const& file, std::vector<Rule>& into);
  void add(JsonIn at, std::vector<Rule>& into);
  bool matches(Rule const& rule, Query const& query) const;

  Links const& links_;
  Warnings& warnings_;
  std::vector<Rule> v4_;
  std::vector<Rule> v6_;
};

/// The name of a table that a kernel has always, for its number as well; other texts as they are.
std::string tableName(std::string const& text);

}  // namespace Host::Import
