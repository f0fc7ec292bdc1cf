#include "host/commands/CommandLine.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <functional>
#include <ostream>

#include "host/commands/Commands.h"
#include "host/show/TextReport.h"
#include "platform/stateway/Backend.h"

namespace Host {

namespace {

constexpr char const* kInputs =
    "State documents (.json) and directories of captures (what ip -j and bridge -j print), in order; a later directory "
    "may hold only the files that changed. Default: a captured leaf that is built in";

/// The commands and the variables of their arguments; parsing selects the command to run.
class CommandLine {
 public:
  CommandLine(std::ostream& out, std::ostream& err) : out_(out), err_(err) {
    app_.name("tessel-agent");
    app_.description("Runs the VXLAN feature of a switch's chip agent on a simulated chip.");
    app_.set_version_flag("--version", std::string("tessel-agent ") + TESSEL_VERSION);
    addRun();
    addExplain();
    addImport();
    addTypes();
    addProfiles();
  }

  int run(std::vector<std::string> arguments) {
    try {
      std::reverse(arguments.begin(), arguments.end());
      app_.parse(arguments);
      // The parser itself would not name a word that is no command.
      if (!command_) throw CLI::RequiredError::Subcommand(1);
      return command_();
    } catch (CLI::ParseError const& error) {
      return app_.exit(error, out_, err_) == 0 ? kGood : kUnusable;
    }
  }

 private:
  CLI::App& add(char const* name, char const* description, std::function<int()> command) {
    auto* const sub = app_.add_subcommand(name, description);
    sub->callback([this, command = std::move(command)] { command_ = command; });
    return *sub;
  }

  void addRun() {
    auto& run = add("run", "Applies inputs to an agent, one after the other, and shows the result",
                    [this] { return runCommand(run_, out_, err_); });
    run.add_option("INPUT", run_.inputs, kInputs);
    run_.addTo(run);
    run.add_option("--show", run_.show, "What to show, comma-separated; json shows all and adds the state on demand")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember(std::vector<std::string>(kSections.begin(), kSections.end())))
        ->capture_default_str();
    run.add_option("--save-upgrade", run_.saveUpgrade,
                   "Writes the ids in use at the end to this file, for the start of the next agent");
    run.add_option("--restore-upgrade", run_.restoreUpgrade, "Starts with the ids that a former run saved");
    run.add_flag("--show-each", run_.showEach, "Show after each input, not only after the last");
  }

  void addExplain() {
    auto* const explain =
        app_.add_subcommand("explain", "Shows the rows of one VTEP, VNI or VTEP group, or what is missing and why");
    explain->add_option("VTEP", explain_.name, "Address of the remote VTEP");
    explain->add_option("INPUT", explain_.inputs, kInputs);
    explain_.addTo(*explain);
    addExplained(*explain, "vni", "Shows the mappings of a VNI", ExplainOptions::What::vni);
    addExplained(*explain, "group", "Shows a VTEP group", ExplainOptions::What::group);
    explain->callback([this] {
      if (explain_.name.empty()) throw CLI::RequiredError("VTEP");
      command_ = [this] { return explainCommand(explain_, out_, err_); };
    });
  }

  void addExplained(CLI::App& explain, char const* name, char const* description, ExplainOptions::What what) {
    auto* const sub = explain.add_subcommand(name, description)->fallthrough();
    sub->add_option("N", explain_.name, "Its number")->required();
    sub->add_option("INPUT", explain_.inputs, kInputs);
    sub->callback([this, what] { explain_.what = what; });
  }

  void addImport() {
    auto* const import = app_.add_subcommand("import", "Converts the output of other programs to a state document");
    auto* const iproute2 = import->add_subcommand("iproute2", "From captures of ip -j and bridge -j");
    iproute2->add_option("DIR", import_.inputs, "Directories of captures, later ones over earlier ones")->required();
    import_.addTo(*iproute2);
    iproute2->callback([this] { command_ = [this] { return importCommand(import_, out_, err_); }; });
  }

  void addTypes() {
    auto& types = add("types", "Lists the registered classes, or describes one",
                      [this] { return typesCommand(name_, plugin_, out_); });
    types.add_option("NAME", name_, "A class, such as Vane::HwTunnelConfig");
    types.add_option("--plugin", plugin_, "Plug-in to load in place of the installed one");
  }

  void addProfiles() {
    auto& profiles =
        add("profiles", "Lists the chip profiles, or describes one", [this] { return profilesCommand(name_, out_); });
    profiles.add_option("NAME", name_, "A profile's name, or a file");
  }

  std::ostream& out_;
  std::ostream& err_;
  CLI::App app_;
  std::function<int()> command_;
  RunOptions run_;
  ExplainOptions explain_;
  InputOptions import_;
  std::string name_;
  std::string plugin_;
};

/// Runs `command` and prints what it throws about input.
template <class Command>
int guarded(std::ostream& err, Command command) {
  try {
    return command();
  } catch (Kiln::InputError const& error) {
    err << error.what() << '\n';
  } catch (Plugin::LoadError const& error) {
    err << error.what() << '\n';
  } catch (Stateway::MountError const& error) {
    err << error.what() << '\n';
  }
  return kUnusable;
}

}  // namespace

int runCommandLine(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& err) {
  return guarded(err, [&] { return CommandLine(out, err).run(arguments); });
}

}  // namespace Host
