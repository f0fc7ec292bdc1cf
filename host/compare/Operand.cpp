#include "host/compare/Operand.h"

#include <algorithm>
#include <filesystem>

#include "host/agent/Inputs.h"
#include "platform/kiln/Exceptions.h"

namespace Host {

std::vector<std::string> pathsOf(std::string const& operand) {
  std::error_code error;
  if (std::filesystem::exists(operand, error)) return {operand};
  std::vector<std::string> paths;
  for (std::size_t begin = 0; begin <= operand.size();) {
    auto const end = std::min(operand.find(',', begin), operand.size());
    if (end == begin) throw Kiln::InputError(operand, "", "an empty path", "expected paths between commas");
    paths.push_back(operand.substr(begin, end - begin));
    begin = end + 1;
  }
  return paths;
}

std::vector<Stateway::StateDocument> readOperand(std::string const& operand, Choices& choices) {
  return readInputs(pathsOf(operand), choices);
}

}  // namespace Host
