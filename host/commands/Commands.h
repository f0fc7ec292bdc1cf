#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands/AgentOptions.h"
#include "host/show/Filter.h"

// What each command does with its arguments. All return an exit code, print results to `out` and warnings to `err`, and
// throw for an input that can't be used.

namespace Host {

/// What `diff` compares.
inline constexpr std::array<std::string_view, 6> kDiffSections{"wish", "tunnels", "vni", "groups", "rows", "chip"};

struct RunOptions : AgentOptions {
  std::vector<std::string> show{"summary"};
  bool showEach = false;
  Filter filter;               ///< Of what is shown.
  std::string saveUpgrade;     ///< The file of the upgrade document that the run ends with; empty: none.
  std::string restoreUpgrade;  ///< That of the document that the agent starts with; empty: none.
};
/// Applies the inputs in turn and shows the state of the agent after the last, or after each.
int runCommand(RunOptions const& options, std::ostream& out, std::ostream& err);
/// Plays a scenario and shows what it violates. Its profile and completion are used where the options name none.
int scenarioCommand(RunOptions options, Stateway::StateDocument const& document, std::ostream& out, std::ostream& err);

struct ExplainOptions : AgentOptions {
  enum class What { vtep, vni, group } what = What::vtep;
  std::string name;  ///< The VTEP's address, or the number of the VNI or group.
};
int explainCommand(ExplainOptions const& options, std::ostream& out, std::ostream& err);

struct DiffOptions : AgentOptions {
  std::string from;  ///< Operands, as `readOperand` takes them; both are the inputs, too.
  std::string to;
  std::vector<std::string> show{kDiffSections.begin(), kDiffSections.end()};
};
/// Shows what two states have otherwise. Ends with `kGood` for equal states and `kNotProgrammed` for others.
int diffCommand(DiffOptions const& options, std::ostream& out, std::ostream& err);

struct PlanOptions : AgentOptions {
  std::string from;  ///< An operand; empty: none.
  std::string fit;   ///< A profile; empty: none. One of both is set.
};
/// Tries a change and shows what it would write, or whether the last input fits into a chip and how much more would.
int planCommand(PlanOptions const& options, std::ostream& out, std::ostream& err);

/// Draws a VTEP or a VNI.
int graphCommand(ExplainOptions const& options, std::ostream& out, std::ostream& err);
/// Compares what the routing suite says with kernel and chip; the inputs are captures of one host.
int againstFrrCommand(AgentOptions const& options, std::ostream& out, std::ostream& err);
/// Checks hosts, each an input or a series of inputs, alone and together.
int checkCommand(AgentOptions const& options, std::ostream& out);

/// Prints the state document of the captures of a switch, directories that are its inputs.
int importCommand(InputOptions const& options, std::ostream& out, std::ostream& err);
/// Lists the registered classes, or describes the named one.
int typesCommand(std::string const& name, std::string const& plugin, bool json, std::ostream& out);
/// Lists the built-in profiles, or describes the named one.
int profilesCommand(std::string const& nameOrFile, bool json, std::ostream& out);

}  // namespace Host
