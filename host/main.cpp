#include <unistd.h>

#include <iostream>

#include "host/commands/CommandLine.h"
#include "host/output/Progress.h"
#include "host/output/StandardStreams.h"

int main(int argc, char** argv) {
  Host::prepareStandardStreams();
  std::ios::sync_with_stdio(false);
  Host::DescriptorBuffer buffer(STDOUT_FILENO);
  std::ostream out(&buffer);
  int code = Host::kUnusable;
  {
    Host::Progress const progress;
    code = Host::runCommandLine({argv + 1, argv + argc}, out, std::cerr);
  }
  if (auto const problem = buffer.finish(); !problem.empty()) {
    std::cerr << "standard output: found nothing that can be written (" << problem
              << "), expected a place for the result\n";
    return Host::kUnusable;
  }
  return code;
}
