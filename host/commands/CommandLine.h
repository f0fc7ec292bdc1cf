#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace Host {

/// Exit codes of the program.
enum ExitCode : int {
  kGood = 0,
  kNotProgrammed = 1,  ///< The input was read, but something of it is not in the chip.
  kUnusable = 2,       ///< Usage, or an input that can't be read.
};

/// Runs `tessel-agent` with these arguments (without the program's name). Prints to `out`, what is wrong to `err`.
/// Throws nothing because of arguments or input.
int runCommandLine(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& err);

}  // namespace Host
