#include "host/commands/AgentOptions.h"

#include <CLI/Validators.hpp>
#include <cstdlib>

#include "platform/kiln/Toggle.h"
#include "platform/kiln/Trace.h"

namespace Host {

void AgentOptions::addTo(CLI::App& command) {
  InputOptions::addTo(command);
  command.add_option("--profile", profile, "Chip profile: the name of a built-in one, or a file")
      ->each([this](std::string const&) { profileGiven = true; })
      ->capture_default_str();
  command
      .add_option("--completion", completion,
                  "When writes to the chip complete: at once, or with the next turn of the loop")
      ->check(CLI::IsMember({"direct", "deferred"}))
      ->each([this](std::string const&) { completionGiven = true; })
      ->capture_default_str();
  command.add_option("--trace", trace,
                     "Traces to standard error: NAME=MASK,…, NAME a source file or a beginning with *, MASK a bit per "
                     "level; after those of TESSEL_TRACE");
  command.add_option("--plugin", plugin, "Plug-in to load in place of the installed one");
}

std::unique_ptr<Agent> AgentOptions::makeAgent(std::shared_ptr<Kiln::JsonDocument const> upgrade) const {
  Kiln::togglesCheck();
  Agent::Options options;
  options.profile = profile;
  options.completion = completion == "direct" ? Asic::Completion::direct : Asic::Completion::deferred;
  if (!plugin.empty()) options.plugin = plugin;
  options.upgrade = std::move(upgrade);
  return std::make_unique<Agent>(options);
}

std::vector<Stateway::StateDocument> readAndCheck(Agent const& agent, AgentOptions const& options, WarningLog& log) {
  auto inputs = readInputs(options);
  for (auto const& input : inputs) agent.check(input);
  for (auto const& input : inputs) log.add(input);
  return inputs;
}

AgentOptions::Traces::Traces(AgentOptions const& options) {
  char const* const environment = std::getenv("TESSEL_TRACE");
  std::string masks = environment ? environment : "";
  if (!masks.empty() && !options.trace.empty()) masks += ',';
  masks += options.trace;
  if (masks.empty()) return;
  // Source files are known by name once they are loaded.
  Plugin::Loader().load(options.plugin.empty() ? defaultPlugin() : std::filesystem::path(options.plugin));
  if (auto const wrong = Kiln::traceMasksIs(masks); !wrong.empty()) throw CLI::ValidationError("--trace", wrong);
  Kiln::traceTextSinkIs(stderr);
  on_ = true;
}

AgentOptions::Traces::~Traces() {
  if (!on_) return;
  Kiln::traceTextSinkIs(nullptr);
  Kiln::traceMasksIs("");
}

}  // namespace Host
