#include "host/commands/CommandLine.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <functional>
#include <ostream>

#include "host/commands/Commands.h"
#include "host/commands/Hint.h"
#include "host/show/TextReport.h"
#include "platform/stateway/Backend.h"

namespace Host {

namespace {

constexpr char const* kInputs =
    "State documents (.json), directories of captures (what tessel-capture writes) and - for a document on standard "
    "input, in order; a later directory may hold only the files that changed. Default: a captured leaf that is built "
    "in";

constexpr char const* kExitCodes =
    "Exit codes:\n"
    "  0  everything that the input asks for is in the chip\n"
    "  1  something is not, as the result says; with --strict also for a warning\n"
    "  2  the command line or an input can't be used, or the result can't be written; nothing was done\n";

constexpr char const* kOverview =
    "What is on this host?  On the host: tessel-capture DIR; then anywhere: tessel-agent run DIR\n"
    "\n"
    "Examples:\n"
    "  tessel-agent run                               the sample that is built in\n"
    "  tessel-agent run leaf1                         what tessel-capture wrote into the directory leaf1\n"
    "  tessel-agent explain 10.255.0.2 leaf1          why traffic to a VTEP does or does not get there\n"
    "  tessel-agent COMMAND --help                    options and examples of a command\n"
    "\n";

constexpr char const* kOperand =
    "A state: a state document, a directory of captures, or several in order, comma-separated (base,events/02)";

/// The commands and the variables of their arguments; parsing selects the command to run.
class CommandLine {
 public:
  CommandLine(std::ostream& out, std::ostream& err) : out_(out), err_(err) {
    app_.name("tessel-agent");
    app_.description("Runs the VXLAN feature of a switch's chip agent on a simulated chip.");
    app_.set_version_flag("--version", std::string("tessel-agent ") + TESSEL_VERSION);
    app_.footer(std::string(kOverview) + kExitCodes);
    addRun();
    addExplain();
    addDiff();
    addPlan();
    addCheck();
    addGraph();
    addImport();
    addTypes();
    addProfiles();
  }

  int run(std::vector<std::string> arguments) {
    auto const typed = arguments;
    try {
      std::reverse(arguments.begin(), arguments.end());
      app_.parse(arguments);
      // The parser itself would not name a word that is no command.
      if (!command_) throw CLI::RequiredError::Subcommand(1);
      return command_();
    } catch (CLI::ParseError const& error) {
      auto const code = app_.exit(error, out_, err_) == 0 ? kGood : kUnusable;
      if (code == kUnusable) printHint(typed);
      return code;
    }
  }

 private:
  /// For the first word that is no command, and the first option that its command doesn't have.
  void printHint(std::vector<std::string> const& typed) const {
    auto const* command = &app_;
    for (auto const& word : typed) {
      bool const option = word.starts_with("--");
      if (!option && word.starts_with('-')) continue;
      auto const subs = command->get_subcommands([](CLI::App const*) { return true; });
      auto const sub =
          std::find_if(subs.begin(), subs.end(), [&](auto const* each) { return each->get_name() == word; });
      if (!option && sub != subs.end()) {
        command = *sub;
        continue;
      }
      if (!option && subs.empty()) continue;
      std::vector<std::string> known;
      for (auto const* each : subs) known.push_back(each->get_name());
      if (option) known = optionsOf(*command);
      auto const name = word.substr(0, word.find('='));
      if (std::find(known.begin(), known.end(), name) != known.end()) continue;
      if (auto const hint = hintFor(name, known); !hint.empty()) err_ << hint << '\n';
      return;
    }
  }

  static std::vector<std::string> optionsOf(CLI::App const& command) {
    std::vector<std::string> names;
    for (auto const* option : command.get_options()) {
      for (auto const& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
  }

  CLI::App& add(char const* name, char const* description, std::function<int()> command) {
    auto* const sub = app_.add_subcommand(name, description);
    sub->callback([this, command = std::move(command)] { command_ = command; });
    return *sub;
  }

  void addRun() {
    auto& run = add("run", "Applies inputs to an agent, one after the other, and shows the result", [this] {
      run_.filter = Filter(vteps_, vni_);
      return runCommand(run_, out_, err_);
    });
    run.add_option("INPUT", run_.inputs, kInputs);
    run_.addTo(run);
    run.add_option("--show", run_.show, "What to show, comma-separated; json shows all and adds the state on demand")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember(std::vector<std::string>(kSections.begin(), kSections.end())))
        ->capture_default_str();
    run.add_option_function<std::string>(
           "--vtep", [this](std::string const& text) { vteps_ = text; }, "Shows only tunnels to these VTEPs")
        ->type_name("ADDRESS|PREFIX");
    run.add_option_function<std::string>(
           "--vni", [this](std::string const& text) { vni_ = text; }, "Shows only what concerns this VNI")
        ->type_name("N");
    run.footer(
        "Examples:\n"
        "  tessel-agent run leaf1                                  a captured host\n"
        "  tessel-agent run base uplink-down --show-each           a capture, and one of what changed later\n"
        "  tessel-agent run leaf1 --show vni,groups,resource       sections, one after the other\n"
        "  tessel-agent run leaf1 --vtep 10.255.0.0/24             some VTEPs\n"
        "  ssh leaf1 cat state.json | tessel-agent run - --format json\n"
        "  tessel-agent run examples/chip-fills.json               a scenario\n\n" +
        std::string(kExitCodes));
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
    addExplained(*explain, explain_, "vni", "Shows the mappings of a VNI", ExplainOptions::What::vni);
    addExplained(*explain, explain_, "group", "Shows a VTEP group", ExplainOptions::What::group);
    explain->callback([this] {
      if (explain_.name.empty()) throw CLI::RequiredError("VTEP");
      command_ = [this] { return explainCommand(explain_, out_, err_); };
    });
  }

  static void addExplained(CLI::App& explain, ExplainOptions& options, char const* name, char const* description,
                           ExplainOptions::What what) {
    auto* const sub = explain.add_subcommand(name, description)->fallthrough();
    sub->add_option("N", options.name, "Its number")->required();
    sub->add_option("INPUT", options.inputs, kInputs);
    sub->callback([&options, what] { options.what = what; });
  }

  void addGraph() {
    auto* const graph = app_.add_subcommand("graph", "Draws the rows of one VTEP or VNI, and what is missing, as DOT");
    graph->add_option("VTEP", graph_.name, "Address of the remote VTEP");
    graph->add_option("INPUT", graph_.inputs, kInputs);
    graph_.addTo(*graph);
    addExplained(*graph, graph_, "vni", "Draws a VNI", ExplainOptions::What::vni);
    graph->footer("Example:\n  tessel-agent graph 10.255.0.2 leaf1 | dot -Tsvg -o vtep.svg\n");
    graph->callback([this] {
      if (graph_.name.empty()) throw CLI::RequiredError("VTEP");
      command_ = [this] { return graphCommand(graph_, out_, err_); };
    });
  }

  void addCheck() {
    auto& check = add("check", "Names what is wrong with hosts, alone and together, or may become so",
                      [this] { return checkCommand(check_, out_); });
    check
        .add_option("HOST", check_.inputs,
                    "A state document, a directory of captures, or several of one host: base,changed")
        ->required();
    check_.addTo(check);
    check.footer(
        "Examples:\n"
        "  tessel-agent check leaf1                  one host\n"
        "  tessel-agent check leaf1 leaf2 leaf3      a fabric\n\n"
        "Exit codes: 0, or 1 where a risk is serious (with --strict also for a warning), or 2 for unusable input.\n");
  }

  void addPlan() {
    auto& plan = add("plan", "Tries a change of state, or whether a state fits; nothing is applied to a switch",
                     [this] { return planCommand(plan_, out_, err_); });
    plan.add_option("INPUT", plan_.inputs, "With --from the state B after the change, with --fit states")->required();
    plan_.addTo(plan);
    auto* const from = plan.add_option("--from", plan_.from, "The state A before the change: what moving to B writes");
    plan.add_option("--fit", plan_.fit, "A profile: whether INPUT fits, and how much more would")->excludes(from);
  }

  void addDiff() {
    auto& diff =
        add("diff",
            "Shows what two states have otherwise: what is wanted, tunnels, rows and the use of the chip. Exit "
            "code 0: nothing, 1: something, 2: an input that can't be used",
            [this] {
              if (!against_.empty()) return compareWithSuite();
              diff_.inputs = {diff_.from, diff_.to};
              return diffCommand(diff_, out_, err_);
            });
    diff.add_option("A", diff_.from, kOperand)->required();
    auto* const second = diff.add_option("B", diff_.to, kOperand);
    diff.add_option("--against", against_,
                    "In place of B: frr, the routes of the routing suite that are in the captures A")
        ->check(CLI::IsMember({"frr"}))
        ->excludes(second);
    diff.parse_complete_callback([this] {
      if (diff_.to.empty() && against_.empty()) throw CLI::RequiredError("B");
    });
    diff_.addTo(diff);
    diff.add_option("--show", diff_.show, "What to compare, comma-separated")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember(std::vector<std::string>(kDiffSections.begin(), kDiffSections.end())))
        ->capture_default_str();
  }

  int compareWithSuite() {
    AgentOptions options = diff_;
    options.inputs = {diff_.from};
    return againstFrrCommand(options, out_, err_);
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
                      [this] { return typesCommand(name_, plugin_, format_ == "json", out_); });
    types.add_option("NAME", name_, "A class, such as Vane::HwTunnelConfig");
    addFormat(types);
    types.add_option("--plugin", plugin_, "Plug-in to load in place of the installed one");
  }

  void addProfiles() {
    auto& profiles = add("profiles", "Lists the chip profiles, or describes one",
                         [this] { return profilesCommand(name_, format_ == "json", out_); });
    profiles.add_option("NAME", name_, "A profile's name, or a file");
    addFormat(profiles);
  }

  void addFormat(CLI::App& command) {
    command.add_option("--format", format_, "How to print")
        ->check(CLI::IsMember({"text", "json"}))
        ->capture_default_str();
  }

  std::ostream& out_;
  std::ostream& err_;
  CLI::App app_;
  std::function<int()> command_;
  RunOptions run_;
  ExplainOptions explain_;
  DiffOptions diff_;
  PlanOptions plan_;
  ExplainOptions graph_;
  AgentOptions check_;
  InputOptions import_;
  std::string against_;
  std::string vteps_;
  std::string vni_;
  std::string name_;
  std::string plugin_;
  std::string format_ = "text";
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
