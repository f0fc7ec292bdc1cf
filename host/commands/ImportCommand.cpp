#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/import/CaptureSet.h"

namespace Host {

int importCommand(InputOptions const& options, std::ostream& out, std::ostream& err) {
  CaptureSet captures;
  for (auto const& directory : options.inputs) captures.overlay(directory);
  auto choices = options.choices;
  auto document = captures.stateDocument(choices);
  choices.vlans.checkTaken();
  WarningLog warnings(options, err);
  Stateway::StateDocument const state(Kiln::JsonDocument(std::move(document), options.inputs.back()));
  warnings.add(state);
  rapidjson::OStreamWrapper stream(out);
  rapidjson::PrettyWriter writer(stream);
  writer.SetIndent(' ', 2);
  state.root().value().Accept(writer);
  out << '\n';
  return warnings.codeAfter(kGood);
}

}  // namespace Host
