#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace Support {

/// One paragraph of a file below tests/data: what is given, a line each, and the lines behind "= " and "! ", which say
/// the result and its warnings. Lines that begin with "#" are comments.
struct Case {
  std::vector<std::string> given;
  std::string result;
};

inline std::vector<Case> cases(std::string const& name) {
  std::ifstream in(TESSEL_SOURCE_DIR "/tests/data/" + name);
  std::vector<Case> all;
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with('#')) continue;
    if (!line.empty() && !inside) all.emplace_back();
    inside = !line.empty();
    bool const result = line.starts_with("= ") || line.starts_with("! ");
    if (inside && result) all.back().result += line + '\n';
    if (inside && !result) all.back().given.push_back(line);
  }
  EXPECT_FALSE(all.empty()) << name;
  return all;
}

}  // namespace Support
