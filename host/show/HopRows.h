#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/show/Tunnels.h"
#include "host/show/VtepRows.h"
#include "platform/kiln/JsonOut.h"
#include "platform/meshal/EthAddr.h"

namespace Host {

/// One next hop of a tunnel: as it is wanted, and as the chip has it.
struct HopRow {
  std::optional<Vane::NextHopEntry> wanted;  ///< Nothing for a row that no wanted next hop asks for.
  unsigned weight = 1;                       ///< How many members of the group it is.
  Asic::EntryHandle::PtrConst row{};         ///< Of the chip's underlay next hop; weak, null if there is none.
  std::string mac{};                         ///< Of that row; empty without one.
  std::string port{};                        ///< Where it sends packets: "port 2", "LAG 5", "VLAN 10".
  std::string state{};                       ///< "programmed", "not chosen", or what is wrong, in a few words.
  bool good = false;                         ///< Packets take it, or are meant not to.

  /// "10.1.1.0 by up1"
  std::string name() const;
};

/// The next hops of a tunnel in the order of their addresses, then rows that none of them asks for. Flooded frames take
/// one next hop of several: the others are "not chosen", which is as wanted.
std::vector<HopRow> hopRows(Agent const& agent, TunnelReport const& tunnel);
/// What the last row of a chain sends its packets to, as `HopRow::port`; empty for other rows.
std::string portText(Asic::EntryHandle const& row);

/// One verdict about the tunnels to a VTEP.
struct Verdict {
  std::string text;                ///< "programmed, 1 of 2 next hops", "not programmed: no route".
  std::optional<std::string> gap;  ///< The first thing that is missing; nothing if all is there.
};
/// `hops` are the next hops of each tunnel.
Verdict verdictOf(std::vector<TunnelReport> const& tunnels, std::vector<std::vector<HopRow>> const& hops);

/// Writes a member "nextHops". REQUIRES: inside an object.
void writeHops(Kiln::JsonWriter& json, std::vector<HopRow> const& hops);

}  // namespace Host
