#include <algorithm>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/show/Explain.h"

namespace Host {

namespace {

Meshal::IpGenAddr parsedVtep(std::string const& text) {
  Meshal::IpGenAddr vtep;
  if (!Kiln::readText(text, vtep) || vtep.isUnspecified()) {
    throw Kiln::InputError("VTEP", "", "'" + text + "'", "expected an IPv4 or IPv6 address");
  }
  return vtep;
}

void explain(ExplainOptions const& options, Agent const& agent, Meshal::IpGenAddr const& vtep,
             std::vector<TunnelReport> const& tunnels, std::ostream& out) {
  if (options.json()) {
    JsonWriter json(out, JsonWriter::Layout::indented);
    json.object();
    writeExplanation(json, agent, vtep, tunnels);
    json.objectEnd();
    out << '\n';
  } else if (tunnels.empty()) {
    out << Kiln::toText(vtep) << " is not wanted: no input has a tunnel to it\n";
  } else {
    printExplanation(out, agent, vtep, tunnels);
  }
}

}  // namespace

int explainCommand(ExplainOptions const& options, std::ostream& out, std::ostream& err) {
  auto const vtep = parsedVtep(options.vtep);
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent();
  for (auto& input : readAndCheck(*agent, options, err)) agent->apply(std::move(input));
  auto const tunnels = tunnelReports(*agent, vtep);
  explain(options, *agent, vtep, tunnels, out);
  bool const good = !tunnels.empty() &&
                    std::all_of(tunnels.begin(), tunnels.end(), [](auto const& tunnel) { return tunnel.programmed(); });
  return good ? kGood : kNotProgrammed;
}

}  // namespace Host
