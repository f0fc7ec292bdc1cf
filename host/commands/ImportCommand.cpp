#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <ostream>

#include "host/agent/Inputs.h"
#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/import/CaptureSet.h"

namespace Host {

int importCommand(std::vector<std::string> const& directories, VlanChoices vlans, std::ostream& out,
                  std::ostream& err) {
  CaptureSet captures;
  for (auto const& directory : directories) captures.overlay(directory);
  std::vector<std::string> warnings;
  auto const document = captures.stateDocument(warnings, vlans);
  vlans.checkTaken();
  printWarnings(warnings, err);
  rapidjson::OStreamWrapper stream(out);
  rapidjson::PrettyWriter writer(stream);
  writer.SetIndent(' ', 2);
  document.Accept(writer);
  out << '\n';
  return kGood;
}

}  // namespace Host
