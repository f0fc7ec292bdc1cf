#include <algorithm>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/show/JsonReport.h"
#include "host/show/TextReport.h"

namespace Host {

namespace {

bool has(std::vector<std::string> const& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

/// Prints the sections after an input, and notes whether every tunnel is programmed.
class Shower {
 public:
  Shower(RunOptions const& options, Agent const& agent, std::ostream& out)
      : options_(options), agent_(agent), out_(out), json_(out, JsonWriter::Layout::indented) {
    if (!options_.json()) return;
    json_.object();
    if (options_.showEach) json_.key("steps").array();
  }

  void step(std::string const& input) {
    if (!options_.showEach) return;
    if (options_.json()) {
      json_.object();
      json_.key("input").text(std::string_view(input));
      show();
      json_.objectEnd();
    } else {
      out_ << "== " << input << "\n\n";
      show();
      out_ << '\n';
    }
  }

  /// Returns the exit code.
  int end() {
    if (!options_.showEach) show();
    if (options_.json()) {
      if (options_.showEach) json_.arrayEnd();
      json_.objectEnd();
      out_ << '\n';
    }
    return good_ ? kGood : kNotProgrammed;
  }

 private:
  void show() {
    auto const tunnels = tunnelReports(agent_);
    good_ = agent_.settled() &&
            std::all_of(tunnels.begin(), tunnels.end(), [](auto const& tunnel) { return tunnel.programmed(); });
    if (options_.json()) return writeReport(json_, agent_, tunnels, has(options_.show, "state"));
    for (auto const& section : options_.show) {
      if (&section != &options_.show.front()) out_ << '\n';
      printSection(out_, section, agent_, tunnels);
    }
  }

  RunOptions const& options_;
  Agent const& agent_;
  std::ostream& out_;
  JsonWriter json_;
  bool good_ = true;
};

}  // namespace

int runCommand(RunOptions const& options, std::ostream& out, std::ostream& err) {
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent();
  auto inputs = readAndCheck(*agent, options.inputs, err);
  // Every input is good: from here on output may be printed.
  Shower shower(options, *agent, out);
  for (auto& input : inputs) {
    auto const name = input.source();
    agent->apply(std::move(input));
    shower.step(name);
  }
  return shower.end();
}

}  // namespace Host
