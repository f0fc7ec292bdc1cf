#include "platform/kiln/Invariant.h"

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <typeinfo>

#include "platform/kiln/Trace.h"

namespace Kiln::Impl {

namespace {

[[noreturn]] void abortWithTraces() {
  static bool failing = false;
  // The text of a traced value may fail in turn; the first failure is the one that counts.
  if (!failing) {
    failing = true;
    std::fputs("Last traces:\n", stderr);
    traceRingDump(stderr, 50);
  }
  std::abort();
}

void printCurrentException() {
  auto const* const type = abi::__cxa_current_exception_type();
  if (!type) return;
  auto* const name = abi::__cxa_demangle(type->name(), nullptr, nullptr, nullptr);
  std::fprintf(stderr, "Uncaught exception %s", name ? name : type->name());
  std::free(name);
  try {
    throw;
  } catch (std::exception const& exception) {
    std::fprintf(stderr, ": %s", exception.what());
  } catch (...) {
  }
  std::fputs("\n", stderr);
}

[[noreturn]] void terminated() {
  printCurrentException();
  abortWithTraces();
}

[[maybe_unused]] auto const formerHandler = std::set_terminate(&terminated);

}  // namespace

void invariantFailed(char const* condition, char const* function, char const* file, unsigned line,
                     std::string const& message) {
  std::string_view const path = relativePath(file);
  std::fprintf(stderr, "INVARIANT failed: %s\n  in %s, %.*s:%u\n", condition, function, static_cast<int>(path.size()),
               path.data(), line);
  if (!message.empty()) std::fprintf(stderr, "  %s\n", message.c_str());
  abortWithTraces();
}

void invariantFailed(char const* condition, char const* function, char const* file, unsigned line) {
  invariantFailed(condition, function, file, line, {});
}

}  // namespace Kiln::Impl
