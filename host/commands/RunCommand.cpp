#include <algorithm>
#include <ostream>

#include "host/agent/Inputs.h"
#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/commands/Shower.h"
#include "host/commands/UpgradeOptions.h"
#include "host/scenario/Scenario.h"

namespace Host {

int runCommand(RunOptions const& options, std::ostream& out, std::ostream& err) {
  auto choices = options.choices;
  auto inputs = readInputs(options.inputs, choices);
  auto const scenario = std::find_if(inputs.begin(), inputs.end(), &Scenario::isOne);
  if (scenario != inputs.end()) {
    if (inputs.size() > 1) scenario->root().member("steps").fail("a scenario is the only input of a run");
    return scenarioCommand(options, *scenario, out, err);
  }
  choices.vlans.checkTaken();
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent(upgradeToRestore(options));
  for (auto const& input : inputs) agent->check(input);
  UpgradeSaver saver(options);
  WarningLog warnings(options, err);
  for (auto const& input : inputs) warnings.add(input);
  // Every input is good: from here on output may be printed.
  Shower shower(options, *agent, warnings, out, false);
  for (auto& input : inputs) {
    auto const name = input.source();
    agent->apply(std::move(input));
    shower.step(name);
  }
  bool const good = shower.end();
  saver.save(*agent);
  return warnings.codeAfter(good ? kGood : kNotProgrammed);
}

}  // namespace Host
