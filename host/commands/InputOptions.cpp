#include "host/commands/InputOptions.h"

#include <CLI/Validators.hpp>
#include <ostream>

#include "host/agent/Inputs.h"
#include "host/commands/CommandLine.h"
#include "host/notes/Notes.h"

namespace Host {

void InputOptions::addTo(CLI::App& command) {
  command.add_option("--format", format, "How to print")->check(CLI::IsMember({"text", "json"}))->capture_default_str();
  command.add_flag("--strict", strict, "Exit code 1 where there is a warning");
  command.add_flag("--quiet,-q", quiet, "No warnings, and no results as text: the exit code alone");
  command
      .add_option_function<std::vector<std::string>>(
          "--vlan",
          [this](auto const& all) {
            for (auto const& each : all) choices.vlans.add(each);
          },
          "VLAN of a VNI, for captures whose bridges have no VLANs; may be repeated. Without it VLANs from 2 up are "
          "assigned in the order of the VNIs")
      ->type_name("VNI=VLAN")
      ->allow_extra_args(false);
  command
      .add_option("--vti", choices.vti,
                  "VXLAN device of the captures whose local VTEP and UDP port count. Default: the one with most remote "
                  "VTEPs")
      ->type_name("NAME");
}

std::vector<Stateway::StateDocument> readInputs(InputOptions const& options) {
  auto choices = options.choices;
  auto inputs = readInputs(options.inputs, choices);
  choices.vlans.checkTaken();
  return inputs;
}

WarningLog::WarningLog(InputOptions const& options, std::ostream& err) : options_(options), err_(err) {
  if (options.inputs.empty() && !options.quiet) {
    err << "no input: this is the built-in sample, a captured leaf switch\n";
  }
}

void WarningLog::add(Stateway::StateDocument const& document) {
  auto const before = warnings_.all().size();
  for (auto& warning : notesOf(document).warnings) warnings_.add(std::move(warning));
  if (options_.quiet) return;
  for (auto i = before; i < warnings_.all().size(); ++i) err_ << "warning: " << warnings_.all()[i].text() << '\n';
}

int WarningLog::codeAfter(int code) const {
  return code == kGood && options_.strict && !warnings_.all().empty() ? kNotProgrammed : code;
}

}  // namespace Host
