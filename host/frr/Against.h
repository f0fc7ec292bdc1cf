#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/frr/FrrRoutes.h"
#include "platform/kiln/JsonOut.h"

namespace Host::Frr {

/// One next hop to a VTEP, and who has it.
struct Compared {
  Meshal::IpGenAddr address;
  std::string interface;
  bool suite = false;
  bool kernel = false;
  bool chip = false;

  bool same() const { return suite == kernel && kernel == chip; }
};

/// The next hops to one VTEP.
struct VtepComparison {
  Meshal::IpGenAddr vtep;
  std::string route;               ///< Of the routing suite: "10.255.0.2/32 bgp"; empty: it has none.
  std::vector<Compared> hops;      ///< By address and interface.
  std::optional<std::string> gap;  ///< The first difference; nothing if there is none.
};

/// Compares the routing suite's next hops of each wanted VTEP with those that the document has from the kernel and with
/// the rows of the chip, by VTEP. REQUIRES: settled.
std::vector<VtepComparison> compare(Agent const& agent, Routes const& routes);

void print(std::ostream& out, std::vector<VtepComparison> const& vteps);
/// As members of an object. REQUIRES: inside one.
void write(Kiln::JsonWriter& json, std::vector<VtepComparison> const& vteps);
bool same(std::vector<VtepComparison> const& vteps);

}  // namespace Host::Frr
