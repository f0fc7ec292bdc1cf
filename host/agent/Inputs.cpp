#include "host/agent/Inputs.h"

#include <filesystem>
#include <ostream>
#include <set>

#include "host/defaults/DefaultLeaf.h"
#include "host/import/CaptureSet.h"

namespace Host {

using Stateway::StateDocument;

std::vector<StateDocument> readInputs(std::vector<std::string> const& paths, VlanChoices& choices, std::ostream& err) {
  std::vector<StateDocument> inputs;
  if (paths.empty()) inputs.push_back(StateDocument::parse(defaultLeaf(), "the built-in leaf"));
  CaptureSet captures;
  std::vector<std::string> warnings;
  for (auto const& path : paths) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
      captures.overlay(path);
      inputs.emplace_back(Kiln::JsonDocument(captures.stateDocument(warnings, choices), path));
    } else {
      inputs.push_back(StateDocument::read(path));
    }
  }
  printWarnings(warnings, err);
  return inputs;
}

void printWarnings(std::vector<std::string> const& warnings, std::ostream& err) {
  std::set<std::string_view> printed;
  for (auto const& warning : warnings) {
    if (printed.insert(warning).second) err << "warning: " << warning << '\n';
  }
}

}  // namespace Host
