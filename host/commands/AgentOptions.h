#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/commands/InputOptions.h"

namespace Host {

/// The options of commands that start an agent.
struct AgentOptions : InputOptions {
  std::string profile = "cascaded";
  std::string completion = "direct";
  /// Whether the command line names them.
  bool profileGiven = false;
  bool completionGiven = false;
  std::string trace;
  std::string plugin;

  void addTo(CLI::App& command);
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

/// Reads the inputs of the options and checks them against the agent; their warnings go to `log`. Throws `InputError`
/// for the first that can't be used, or a VLAN for a VNI that none has; then nothing has been applied.
std::vector<Stateway::StateDocument> readAndCheck(Agent const& agent, AgentOptions const& options, WarningLog& log);

}  // namespace Host
