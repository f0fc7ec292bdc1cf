#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/agent/Inputs.h"

namespace Host {

/// The options of commands that start an agent.
struct AgentOptions {
  std::string profile = "cascaded";
  std::string completion = "direct";
  /// Whether the command line names them.
  bool profileGiven = false;
  bool completionGiven = false;
  std::string format = "text";
  std::string trace;
  std::string plugin;
  VlanChoices vlans;
  std::vector<std::string> inputs;

  void addTo(CLI::App& command);
  bool json() const { return format == "json"; }
  /// Switches traces on for the life of the object: those of the environment (TESSEL_TRACE), then `trace`. Throws
  /// `Plugin::LoadError`, or `CLI::ValidationError` for a list that can't be parsed.
  class Traces;
  /// An agent in its start state. Throws `InputError` for a profile or a toggle file that cannot be used.
  /// `upgrade` is what it starts with, null for nothing.
  std::unique_ptr<Agent> makeAgent(std::shared_ptr<Kiln::JsonDocument const> upgrade = {}) const;
};

class AgentOptions::Traces {
 public:
  explicit Traces(AgentOptions const& options);
  ~Traces();
  Traces(Traces const&) = delete;
  Traces& operator=(Traces const&) = delete;

 private:
  bool on_ = false;
};

/// Adds the option --vlan of commands that read captures.
void addVlanOption(CLI::App& command, VlanChoices& vlans);

/// Reads the inputs of the options and checks them against the agent, with warnings to `err`. Throws `InputError` for
/// the first that can't be used, or a VLAN for a VNI that none has; then nothing has been applied.
std::vector<Stateway::StateDocument> readAndCheck(Agent const& agent, AgentOptions const& options, std::ostream& err);

}  // namespace Host
