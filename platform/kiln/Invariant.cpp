#include "platform/kiln/Invariant.h"

#include <cstdio>
#include <cstdlib>

#include "platform/kiln/Trace.h"

namespace Kiln::Impl {

void invariantFailed(char const* condition, char const* function, char const* file, unsigned line,
                     std::string const& message) {
  static bool failing = false;
  std::string_view const path = relativePath(file);
  std::fprintf(stderr, "INVARIANT failed: %s\n  in %s, %.*s:%u\n", condition, function, static_cast<int>(path.size()),
               path.data(), line);
  if (!message.empty()) std::fprintf(stderr, "  %s\n", message.c_str());
  // The text of a traced value may fail in turn; the first failure is the one that counts.
  if (!failing) {
    failing = true;
    std::fputs("Last traces:\n", stderr);
    traceRingDump(stderr, 50);
  }
  std::fflush(stderr);
  std::abort();
}

void invariantFailed(char const* condition, char const* function, char const* file, unsigned line) {
  invariantFailed(condition, function, file, line, {});
}

}  // namespace Kiln::Impl
