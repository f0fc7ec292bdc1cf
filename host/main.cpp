#include <iostream>

#include "host/commands/CommandLine.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  return Host::runCommandLine({argv + 1, argv + argc}, std::cout, std::cerr);
}
