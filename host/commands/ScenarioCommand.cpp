#include <algorithm>
#include <ostream>
#include <sstream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/commands/Shower.h"
#include "host/commands/UpgradeOptions.h"
#include "host/scenario/Scenario.h"
#include "host/show/JsonReport.h"

namespace Host {

namespace {

void refuse(Asic::SimulatedChip& chip, Refusal const& refusal) {
  switch (refusal.by) {
    case Refusal::By::table:
      return chip.refuseTable(refusal.text, refusal.with);
    case Refusal::By::key:
      return chip.refuseKey(refusal.text, refusal.with);
    case Refusal::By::write:
      return chip.refuseNth(refusal.write, refusal.with);
  }
}

/// Throws `InputError` for a state that the agent can't take, or a table that its chip doesn't have.
void check(Agent const& agent, Scenario const& scenario, std::string const& file) {
  auto const tables = agent.chip().tables();
  for (auto const& step : scenario.steps) {
    if (step.state) agent.check(*step.state);
    for (auto const& [table, hasSpace] : step.space) {
      if (!agent.chip().store(table)) {
        throw Kiln::InputError(file, step.name + "/space", table, "expected a table of the chip");
      }
    }
    for (auto const& refusal : step.refuse) {
      bool const known =
          refusal.by != Refusal::By::table ||
          std::any_of(tables.begin(), tables.end(), [&](auto const& t) { return t.name == refusal.text; });
      if (!known) throw Kiln::InputError(file, step.name + "/refuse", refusal.text, "expected a table of the chip");
    }
  }
}

void play(Agent& agent, ScenarioStep& step) {
  if (step.heal) agent.driver().refuseNone();
  for (auto const& refusal : step.refuse) refuse(agent.driver(), refusal);
  for (auto const& [table, hasSpace] : step.space) agent.chip().hasSpaceIs(table, hasSpace);
  if (step.state) agent.apply(std::move(*step.state));
  if (step.restart) agent.restart();
  agent.settle();
}

/// The report as other programs get it.
Kiln::JsonDocument reportDocument(Agent const& agent) {
  std::ostringstream text;
  {
    JsonWriter json(text, JsonWriter::Layout::compact);
    json.object();
    writeReport(json, agent, reportOf(agent), true);
    json.objectEnd();
  }
  return Kiln::JsonDocument::parse(text.str(), "report");
}

struct Violation {
  Expectation const* expectation;
  std::string found;
};

std::vector<Violation> violationsOf(Agent const& agent, ScenarioStep const& step) {
  std::vector<Violation> violations;
  if (step.expect.empty()) return violations;
  auto const report = reportDocument(agent);
  for (auto const& expectation : step.expect) {
    if (auto found = expectation.violation(report.root())) violations.push_back({&expectation, std::move(*found)});
  }
  return violations;
}

std::string textOf(std::vector<Violation> const& violations) {
  std::string text;
  for (auto const& [expectation, found] : violations) {
    text += expectation->path() + ": wanted " + expectation->wanted() + ", found " + found + '\n';
  }
  return text;
}

void writeStep(JsonWriter& json, ScenarioStep const& step, std::vector<Violation> const& violations) {
  json.key("step").text(std::string_view(step.name));
  json.key("expected").number(std::uint64_t{step.expect.size()});
  json.key("violations").array();
  for (auto const& [expectation, found] : violations) {
    json.object();
    json.key("path").text(std::string_view(expectation->path()));
    json.key("wanted").text(std::string_view(expectation->wanted()));
    json.key("found").text(std::string_view(found));
    json.objectEnd();
  }
  json.arrayEnd();
}

}  // namespace

int scenarioCommand(RunOptions options, Stateway::StateDocument const& document, std::ostream& out, std::ostream& err) {
  auto scenario = Scenario::read(document, options.choices);
  options.choices.vlans.checkTaken();
  if (scenario.profile && !options.profileGiven) options.profile = *scenario.profile;
  if (scenario.completion && !options.completionGiven) options.completion = *scenario.completion;
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent(upgradeToRestore(options));
  check(*agent, scenario, document.source());
  UpgradeSaver saver(options);
  WarningLog warnings(options, err);
  for (auto const& step : scenario.steps) {
    if (step.state) warnings.add(*step.state);
  }
  Shower shower(options, *agent, warnings, out, true);
  bool expects = false;
  bool hold = true;
  for (auto& step : scenario.steps) {
    play(*agent, step);
    auto const violations = violationsOf(*agent, step);
    expects = expects || !step.expect.empty();
    hold = hold && violations.empty();
    shower.step(
        step.name, [&](JsonWriter& json) { writeStep(json, step, violations); }, textOf(violations));
  }
  bool const programmed = shower.end();
  saver.save(*agent);
  return warnings.codeAfter((expects ? hold : programmed) ? kGood : kNotProgrammed);
}

}  // namespace Host
