#include <algorithm>
#include <functional>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/commands/Operands.h"
#include "host/show/Explain.h"
#include "host/show/ExplainGroup.h"
#include "host/show/ExplainVni.h"
#include "host/show/JsonReport.h"

namespace Host {

namespace {

constexpr std::string_view kFormat = "tessel-explain/1";

/// Prints an explanation, as text or JSON. Returns whether what it explains is as wanted.
using Explanation = std::function<bool(Agent const& agent, bool json, std::ostream& out)>;

bool explainVtep(Meshal::IpGenAddr const& vtep, Agent const& agent, bool json, std::ostream& out) {
  auto const tunnels = tunnelReports(agent, vtep);
  if (json) {
    writeObject(out, [&](JsonWriter& writer) {
      writer.key("format").text(kFormat);
      writeExplanation(writer, agent, vtep, tunnels);
    });
  } else if (tunnels.empty()) {
    out << Kiln::toText(vtep) << " is not wanted: no input has a tunnel to it\n";
  } else {
    printExplanation(out, agent, vtep, tunnels);
  }
  return !tunnels.empty() &&
         std::all_of(tunnels.begin(), tunnels.end(), [](auto const& tunnel) { return tunnel.programmed(); });
}

bool explainVni(Vxlan::VniExt vni, Agent const& agent, bool json, std::ostream& out) {
  auto const mappings = mappingReports(agent, vni);
  if (json) {
    writeObject(out, [&](JsonWriter& writer) {
      writer.key("format").text(kFormat);
      writeVniExplanation(writer, agent, vni, mappings);
    });
  } else if (mappings.empty()) {
    out << "VNI " << Kiln::toText(vni) << " is not wanted: no input maps it\n";
  } else {
    printVniExplanation(out, agent, vni, mappings);
  }
  return !mappings.empty() &&
         std::all_of(mappings.begin(), mappings.end(), [](auto const& mapping) { return mapping.isAsWanted(); });
}

bool explainGroup(Vane::VXLAN::VaneVtepGroupKey key, Agent const& agent, bool json, std::ostream& out) {
  auto const groups = groupReports(agent, tunnelReports(agent));
  auto const group = std::find_if(groups.begin(), groups.end(), [&](auto const& report) { return report.key == key; });
  bool const known = group != groups.end();
  if (json) {
    writeObject(out, [&](JsonWriter& writer) {
      writer.key("format").text(kFormat);
      writer.key("group").number(std::uint64_t{key.value()});
      writeGroupExplanation(writer, known ? &*group : nullptr);
    });
  } else if (known) {
    printGroupExplanation(out, agent, *group);
  } else {
    out << "group " << Kiln::toText(key) << " is not wanted: no input has it\n";
  }
  return known && group->programmed();
}

/// Throws `InputError` for a name that can't be one.
Explanation explanationOf(ExplainOptions const& options) {
  using namespace std::placeholders;
  switch (options.what) {
    case ExplainOptions::What::vni: {
      Vxlan::VniExt const vni(numberOperand("VNI", options.name, Vxlan::VniExt::min, Vxlan::VniExt::max));
      return std::bind(&explainVni, vni, _1, _2, _3);
    }
    case ExplainOptions::What::group: {
      Vane::VXLAN::VaneVtepGroupKey const key(numberOperand("GROUP", options.name, 0, UINT32_MAX));
      return std::bind(&explainGroup, key, _1, _2, _3);
    }
    case ExplainOptions::What::vtep:
      break;
  }
  return std::bind(&explainVtep, vtepOperand(options.name), _1, _2, _3);
}

}  // namespace

int explainCommand(ExplainOptions const& options, std::ostream& out, std::ostream& err) {
  auto const explanation = explanationOf(options);
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent();
  WarningLog warnings(options, err);
  for (auto& input : readAndCheck(*agent, options, warnings)) agent->apply(std::move(input));
  return warnings.codeAfter(explanation(*agent, options.json(), out) ? kGood : kNotProgrammed);
}

}  // namespace Host
