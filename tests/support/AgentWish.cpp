#include "tests/support/AgentWish.h"

#include <fmt/format.h>

namespace AgentTest {

namespace {

constexpr unsigned ports = 9, lag = 9, uplinks = 12;

/// Members of a JSON object or array, put together one by one.
class List {
 public:
  void add(std::string const& member) { text_ += (text_.empty() ? "" : ",") + member; }
  std::string const& text() const { return text_; }

 private:
  std::string text_;
};

std::string quoted(std::string const& text) { return '"' + text + '"'; }

std::string hopText(Hop const& hop) {
  return fmt::format(R"({{"type":"{}","addr":"10.1.{}.1","ethAddr":"{}","l2Intf":"{}","l3Intf":"Vlan{}"}})",
                     hop.resolved ? "nextHopResolved" : "nextHopUnresolved", hop.uplink,
                     hop.resolved ? fmt::format("02:00:00:00:00:{:02x}", hop.uplink) : "00:00:00:00:00:00", portOf(hop),
                     100 + hop.uplink);
}

std::string vtiText(Wish const& wish) {
  if (!wish.vti) return "";
  List fields;
  fields.add(fmt::format(R"("udpPort":{})", wish.udpPort));
  if (!wish.localVtep.empty()) fields.add(R"("srcAddr":)" + quoted(wish.localVtep));
  if (!wish.localVtep6.empty()) fields.add(R"("srcAddrV6":)" + quoted(wish.localVtep6));
  if (!wish.mlagVtep.empty()) fields.add(R"("mlagVtepAddr":)" + quoted(wish.mlagVtep));
  if (!wish.mlagVtep6.empty()) fields.add(R"("mlagVtepAddr6":)" + quoted(wish.mlagVtep6));
  if (wish.udpSrcPorts != 0) {
    fields.add(fmt::format(R"("udpSrcPort":{},"udpSrcPortLength":{})", wish.udpSrcPort, wish.udpSrcPorts));
  }
  return R"("Vxlan1":{)" + fields.text() + '}';
}

std::string tunnelsText(Wish const& wish, Vane::TunnelType type) {
  List adjacencies, tunnels;
  for (auto const& [id, hops] : wish.adjacencies) {
    List entries;
    for (auto const& hop : hops) entries.add(hopText(hop));
    adjacencies.add(fmt::format(R"("{}":{{"nextHops":[{}]}})", id, entries.text()));
  }
  for (auto const& [key, tunnel] : wish.tunnels) {
    if (key.first != type) continue;
    List fields;
    if (tunnel.adjId) fields.add(fmt::format(R"("adjId":{})", *tunnel.adjId));
    if (tunnel.genId != 0) fields.add(fmt::format(R"("genId":{})", tunnel.genId));
    tunnels.add(quoted(key.second) + ":{" + fields.text() + '}');
  }
  return fmt::format(R"({{"adjacency":{{{}}},"tunnel":{{{}}}}})", adjacencies.text(), tunnels.text());
}

std::string switchText(Wish const& wish) {
  List port, l3Intf;
  for (unsigned n = 1; n <= ports; ++n) {
    port.add(fmt::format(R"("Ethernet{}":{{"kind":"{}","number":{}}})", n, n == lag ? "lag" : "port",
                         n == 1 ? wish.firstPort : n));
  }
  for (unsigned n = 1; n <= uplinks; ++n) l3Intf.add(fmt::format(R"("Vlan{}":{})", 100 + n, 100 + n));
  return fmt::format(R"("hardware/tessel/port/config":{{"port":{{{}}}}},"vane/l3IntfTable":{{"l3Intf":{{{}}}}})",
                     port.text(), l3Intf.text());
}

}  // namespace

std::string Wish::document() const {
  List paths;
  paths.add(switchText(*this));
  paths.add(fmt::format(R"("interface/status/eth/vxlan":{{"vtiStatus":{{{}}}}})", vtiText(*this)));
  paths.add(fmt::format(R"("vxlan/config":{{"dscpPropagation":{}}})", dscp));
  paths.add(fmt::format(R"("hardware/tessel/tunnel/vxlan/vxlanInfo/vaneGlobalVtiStatus":{{"dataPathLearning":{}}})",
                        learning));
  paths.add(R"("hardware/tessel/tunnel/configDir/vxlanTunnel":)" + tunnelsText(*this, unicast));
  paths.add(R"("hardware/tessel/tunnel/configDir/vxlanMemberTunnel":)" + tunnelsText(*this, member));
  return R"({"stateway":{)" + paths.text() + "}}";
}

}  // namespace AgentTest
