#pragma once

#include <string>

/// States what holds at this place whatever the input; checked in every build.
///
/// When it does not hold, prints the condition's text, the function and the source path to standard error, then the
/// last 50 lines of the trace ring, and aborts. An expression of type void; `INVARIANT(false && "Invalid Destination")`
/// states a reason by the condition's own text.
///
/// An exception that leaves a handler, or that nothing catches, ends the process alike: its type and text, the last
/// traces, abort. Loading this library sets the terminate handler that does so.
#define INVARIANT(...)                                    \
  (__builtin_expect(static_cast<bool>(__VA_ARGS__), true) \
       ? void()                                           \
       : ::Kiln::Impl::invariantFailed(#__VA_ARGS__, __func__, __FILE__, __LINE__))

/// The same with a text of what was found: `INVARIANT_MSG(row < rows, "row {} of {}", row, rows)`. The text's arguments
/// are those of a trace and are evaluated on failure only. REQUIRES: platform/kiln/Trace.h is included.
#define INVARIANT_MSG(condition, ...)                                            \
  (__builtin_expect(static_cast<bool>(condition), true)                          \
       ? void()                                                                  \
       : ::Kiln::Impl::invariantFailed(#condition, __func__, __FILE__, __LINE__, \
                                       ::Kiln::Impl::formatText(__VA_ARGS__)))

namespace Kiln::Impl {

[[noreturn, gnu::cold]] void invariantFailed(char const* condition, char const* function, char const* file,
                                             unsigned line);
[[noreturn, gnu::cold]] void invariantFailed(char const* condition, char const* function, char const* file,
                                             unsigned line, std::string const& message);

}  // namespace Kiln::Impl
