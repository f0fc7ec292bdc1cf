#include "host/compare/Operand.h"

#include <filesystem>

#include "host/agent/Inputs.h"

namespace Host {

std::vector<Stateway::StateDocument> readOperand(std::string const& operand, Choices& choices) {
  std::error_code error;
  std::vector<std::string> paths;
  if (std::filesystem::exists(operand, error)) {
    paths.push_back(operand);
  } else {
    for (std::size_t begin = 0; begin <= operand.size();) {
      auto const end = std::min(operand.find(',', begin), operand.size());
      paths.push_back(operand.substr(begin, end - begin));
      begin = end + 1;
    }
  }
  return readInputs(paths, choices);
}

}  // namespace Host
