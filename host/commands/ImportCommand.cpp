#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/import/CaptureSet.h"
#include "host/show/Json.h"

namespace Host {

int importCommand(std::vector<std::string> const& directories, std::ostream& out) {
  CaptureSet captures;
  for (auto const& directory : directories) captures.overlay(directory);
  auto const document = captures.stateDocument();
  JsonWriter(out).value(document);
  out << '\n';
  return kGood;
}

}  // namespace Host
