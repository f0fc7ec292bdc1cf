#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "host/check/Fabric.h"
#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/compare/Operand.h"
#include "host/show/Columns.h"
#include "host/show/JsonReport.h"

namespace Host {

namespace {

/// The host's own name, or what the operand is called.
std::string nameOf(Stateway::StateDocument const& document, std::string const& operand) {
  if (auto const host = notesOf(document).host; !host.empty()) return host;
  auto const path = std::filesystem::path(pathsOf(operand).front()).lexically_normal();
  return path.has_filename() ? path.stem().string() : path.parent_path().filename().string();
}

/// Names that several hosts have are followed by their operands.
void distinguish(std::vector<std::string>& names, std::vector<std::string> const& operands) {
  auto const all = names;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (std::count(all.begin(), all.end(), all[i]) > 1) names[i] = fmt::format("{} ({})", all[i], operands[i]);
  }
}

HostFacts examine(AgentOptions const& options, Stateway::StateDocument document, std::string name) {
  auto const agent = options.makeAgent();
  TableUse const before(agent->chip());
  agent->apply(std::move(document));
  return factsOf(*agent, before, std::move(name));
}

void printRisks(std::ostream& out, std::vector<Risk> const& risks, std::size_t hosts) {
  using enum Columns::Align;
  Columns columns({left, left, left, left});
  columns.row({"WEIGHT", "HOST", "SUBJECT", "RISK"});
  for (auto const& risk : risks) {
    columns.row(
        {std::string(weightText(risk.weight)), fmt::format("{}", fmt::join(risk.hosts, " ")), risk.subject, risk.text});
  }
  if (!risks.empty()) columns.print(out);
  auto const count = [&](Risk::Weight weight) {
    return std::count_if(risks.begin(), risks.end(), [&](auto const& risk) { return risk.weight == weight; });
  };
  auto const counted = [](auto number, std::string_view one) {
    return fmt::format("{} {}{}", number, one, number == 1 ? "" : "s");
  };
  out << (risks.empty() ? "" : "\n")
      << fmt::format("{}: {} serious, {}, {}\n", counted(hosts, "host"), count(Risk::Weight::serious),
                     counted(count(Risk::Weight::warning), "warning"), counted(count(Risk::Weight::hint), "hint"));
}

void writeRisks(JsonWriter& json, std::vector<Risk> const& risks, std::vector<std::string> const& names) {
  json.key("format").text(std::string_view("tessel-check/1"));
  json.key("hosts").array();
  for (auto const& name : names) json.text(std::string_view(name));
  json.arrayEnd();
  json.key("risks").array();
  for (auto const& risk : risks) {
    json.object();
    json.key("weight").text(weightText(risk.weight));
    json.key("kind").text(std::string_view(risk.kind));
    json.key("hosts").array();
    for (auto const& host : risk.hosts) json.text(std::string_view(host));
    json.arrayEnd();
    json.key("subject").text(std::string_view(risk.subject));
    json.key("text").text(std::string_view(risk.text));
    json.objectEnd();
  }
  json.arrayEnd();
}

}  // namespace

int checkCommand(AgentOptions const& options, std::ostream& out) {
  AgentOptions::Traces const traces(options);
  auto choices = options.choices;
  std::vector<Stateway::StateDocument> documents;
  std::vector<std::string> names;
  auto const checker = options.makeAgent();
  for (auto const& operand : options.inputs) {
    documents.push_back(std::move(readOperand(operand, choices).back()));
    checker->check(documents.back());
    names.push_back(nameOf(documents.back(), operand));
  }
  choices.vlans.checkTaken();
  distinguish(names, options.inputs);
  std::vector<HostFacts> hosts;
  for (std::size_t i = 0; i < documents.size(); ++i) {
    hosts.push_back(examine(options, std::move(documents[i]), names[i]));
  }
  auto const risks = risksOf(hosts);
  if (options.json()) {
    writeObject(out, [&](JsonWriter& json) { writeRisks(json, risks, names); });
  } else if (!options.quiet) {
    printRisks(out, risks, hosts.size());
  }
  auto const worst = options.strict ? Risk::Weight::warning : Risk::Weight::serious;
  return !risks.empty() && risks.front().weight <= worst ? kNotProgrammed : kGood;
}

}  // namespace Host
