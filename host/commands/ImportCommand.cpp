#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/import/CaptureSet.h"

namespace Host {

int importCommand(std::vector<std::string> const& directories, std::ostream& out) {
  CaptureSet captures;
  for (auto const& directory : directories) captures.overlay(directory);
  auto const document = captures.stateDocument();
  rapidjson::OStreamWrapper stream(out);
  rapidjson::PrettyWriter writer(stream);
  writer.SetIndent(' ', 2);
  document.Accept(writer);
  out << '\n';
  return kGood;
}

}  // namespace Host
