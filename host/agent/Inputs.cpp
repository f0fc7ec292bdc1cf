#include "host/agent/Inputs.h"

#include <filesystem>

#include "host/defaults/DefaultLeaf.h"
#include "host/import/CaptureSet.h"
#include "host/json/JsonFile.h"

namespace Host {

std::vector<Input> readInputs(std::vector<std::string> const& paths) {
  std::vector<Input> inputs;
  if (paths.empty()) inputs.push_back({"the built-in leaf", Stateway::StateDocument::parse(defaultLeaf())});
  CaptureSet captures;
  for (auto const& path : paths) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
      captures.overlay(path);
      inputs.push_back({path, Stateway::StateDocument(captures.stateDocument())});
    } else {
      inputs.push_back({path, Stateway::StateDocument(JsonFile(path).documentTake())});
    }
  }
  return inputs;
}

}  // namespace Host
