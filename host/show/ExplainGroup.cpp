#include "host/show/ExplainGroup.h"

#include <ostream>

#include "host/show/JsonReport.h"
#include "host/show/RowPrinter.h"

namespace Host {

namespace {

std::string idText(std::optional<std::uint32_t> const& id) { return id ? Kiln::toText(*id) : "none"; }

std::string publishedMembers(Agent const& agent, GroupReport const& group) {
  auto const statuses = agent.state<Vane::VXLAN::VaneVtepGroupStatusDir>(kVtepGroupStatusPath);
  auto const& status = statuses->vaneVtepGroupStatus(group.key);
  std::string text;
  if (!status) return text;
  for (auto const& [vtep, active] : status->activeVtepListColl()) text += ' ' + Kiln::toText(vtep);
  return text;
}

}  // namespace

void printGroupExplanation(std::ostream& out, Agent const& agent, GroupReport const& group) {
  auto const name = "group " + Kiln::toText(group.key);
  out << name << ", version " << group.version << "\n  tunnel id " << idText(group.tunnelId) << ", next-hop id "
      << idText(group.nextHopId) << '\n';
  auto const published = publishedMembers(agent, group);
  out << "  published members:" << (published.empty() ? " none" : published) << '\n';
  for (auto const& member : group.members) {
    out << "  " << Kiln::toText(member.vtep) << ": " << member.reason.value_or("forwards") << '\n';
  }
  out << '\n';
  RowPrinter(out).print(0, "group", group.row);
  out << '\n' << name << ": " << (group.reason ? "not programmed, " + *group.reason : "programmed") << '\n';
}

void writeGroupExplanation(Kiln::JsonWriter& json, GroupReport const* group) {
  json.key("report");
  group ? writeGroup(json, *group) : json.null();
  writeChain(json.key("chain"), group ? group->row.row : nullptr);
  auto const gap = group ? group->reason : std::optional<std::string>("no input has it");
  json.key("verdict").text(std::string_view(!group ? "not wanted" : gap ? "not programmed" : "programmed"));
  json.key("gap").text(gap);
}

}  // namespace Host
