#include <algorithm>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/commands/Operands.h"
#include "host/graph/Graph.h"
#include "host/show/JsonReport.h"

namespace Host {

namespace {

/// A drawing, and whether what it shows is as wanted.
struct Drawn {
  Drawing drawing;
  std::string title;
  bool asWanted;
};

Drawn drawVtep(Agent const& agent, Meshal::IpGenAddr const& vtep) {
  auto const tunnels = tunnelReports(agent, vtep);
  bool const asWanted =
      std::all_of(tunnels.begin(), tunnels.end(), [](auto const& tunnel) { return tunnel.programmed(); });
  return {vtepGraph(agent, vtep, tunnels), "VTEP " + Kiln::toText(vtep), !tunnels.empty() && asWanted};
}

Drawn drawVni(Agent const& agent, Vxlan::VniExt vni) {
  auto const mappings = mappingReports(agent, vni);
  bool const asWanted =
      std::all_of(mappings.begin(), mappings.end(), [](auto const& mapping) { return mapping.isAsWanted(); });
  return {vniGraph(agent, vni, mappings), "VNI " + Kiln::toText(vni), !mappings.empty() && asWanted};
}

}  // namespace

int graphCommand(ExplainOptions const& options, std::ostream& out, std::ostream& err) {
  bool const ofVni = options.what == ExplainOptions::What::vni;
  auto const vtep = ofVni ? Meshal::IpGenAddr() : vtepOperand(options.name);
  auto const vni = ofVni ? numberOperand("VNI", options.name, Vxlan::VniExt::min, Vxlan::VniExt::max) : 0;
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent();
  WarningLog warnings(options, err);
  for (auto& input : readAndCheck(*agent, options, warnings)) agent->apply(std::move(input));
  auto const drawn = ofVni ? drawVni(*agent, Vxlan::VniExt(vni)) : drawVtep(*agent, vtep);
  if (options.json()) {
    writeObject(out, [&](JsonWriter& json) {
      json.key("format").text(std::string_view("tessel-graph/1"));
      json.key("title").text(std::string_view(drawn.title));
      drawn.drawing.write(json);
    });
  } else if (!options.quiet) {
    drawn.drawing.print(out, drawn.title);
  }
  return warnings.codeAfter(drawn.asWanted ? kGood : kNotProgrammed);
}

}  // namespace Host
