#include "host/agent/Inputs.h"

#include <filesystem>

#include "host/defaults/DefaultLeaf.h"
#include "host/import/CaptureSet.h"

namespace Host {

using Stateway::StateDocument;

std::vector<StateDocument> readInputs(std::vector<std::string> const& paths, Choices& choices) {
  std::vector<StateDocument> inputs;
  if (paths.empty()) inputs.push_back(StateDocument::parse(defaultLeaf(), "the built-in leaf"));
  CaptureSet captures;
  for (auto const& path : paths) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
      captures.overlay(path);
      inputs.emplace_back(Kiln::JsonDocument(captures.stateDocument(choices), path));
    } else {
      inputs.push_back(StateDocument::read(path));
    }
  }
  return inputs;
}

}  // namespace Host
