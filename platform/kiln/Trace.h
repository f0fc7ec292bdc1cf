#pragma once

#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiln/TraceRing.h"

/// Names the source file for traces; once in each .cpp file that uses `TRACE`, at its head. Not for headers: the handle
/// is the file's own.
/// Several files may have the same name.
#define KILN_TRACE_FILE(name)                                             \
  namespace {                                                             \
  constinit ::Kiln::TraceHandle kilnTraceHandle(name);                    \
  ::Kiln::TraceRegistration const kilnTraceRegistration(kilnTraceHandle); \
  }                                                                       \
  static_assert(true)

/// Records a trace when its level (0 to 9, a constant) is on: `TRACE(1, " key: {} genId: {}", key, genId)`.
///
/// An expression of type void. Off, it is one test and a branch, and no argument is evaluated. On, it copies the
/// arguments into the ring; the text is made when the ring is read. Arguments: numbers, bool, enumerations, pointers,
/// strings (cut to fit) and every type with an `appendText(std::string&, T const&)` beside it; such a type is copied
/// where it is trivially copyable and at most 64 bytes, otherwise its text is made at once. The format is checked by
/// the compiler; numbers may carry a format such as {:#x}, types with `appendText` those of strings.
#define TRACE(level, ...) TRACE_IN(__func__, level, __VA_ARGS__)

/// The same under the name of another function, for lambdas, whose own name says nothing:
/// `TRACE_IN("insertEntry", 1, ...)`. REQUIRES: the name lives as long as the process.
#define TRACE_IN(function, level, format, ...)                                                      \
  (__builtin_expect(kilnTraceHandle.isOn(level), false)                                             \
       ? ::Kiln::Impl::trace(                                                                       \
             [] {                                                                                   \
               return ::Kiln::Impl::TraceText{&kilnTraceHandle, __FILE__, __LINE__, level, format}; \
             },                                                                                     \
             function __VA_OPT__(, ) __VA_ARGS__)                                                   \
       : void())

namespace Kiln {

/// The levels of one source file: bit n of the mask switches level n on.
///
/// Constant-initialised, so that a trace during the start of the process is safe. Masks are written by the functions
/// below only. Main thread only.
class TraceHandle {
 public:
  static constexpr unsigned levels = 10;
  static constexpr unsigned allLevels = (1U << levels) - 1;

  constexpr explicit TraceHandle(char const* name) : name_(name) {}
  TraceHandle(TraceHandle const&) = delete;
  TraceHandle& operator=(TraceHandle const&) = delete;

  bool isOn(unsigned level) const { return (mask_ >> level & 1U) != 0; }
  unsigned mask() const { return mask_; }
  char const* name() const { return name_; }
  /// The handle that was registered before this one; null for the first.
  TraceHandle const* next() const { return next_; }

 private:
  friend class TraceRegistry;
  unsigned mask_ = 0;
  char const* name_;
  TraceHandle* next_ = nullptr;
};

/// Keeps a handle in the process-wide list while its file is loaded; removes the file's traces from the ring at unload.
class TraceRegistration {
 public:
  explicit TraceRegistration(TraceHandle& handle);
  ~TraceRegistration();
  TraceRegistration(TraceRegistration const&) = delete;
  TraceRegistration& operator=(TraceRegistration const&) = delete;

 private:
  TraceHandle& handle_;
};

/// Sets the levels of all files from "NAME=MASK,NAME2=MASK": NAME may end in `*`, MASK is a number, decimal or
/// 0x and hexadecimal, of at most 10 bits; of several items that fit a file the last counts; a file that no item fits
/// is off. Files that are loaded later are set alike. Returns an empty text, or what is wrong (ill-formed item, or a
/// name that no loaded file has); then nothing has changed.
std::string traceMasksIs(std::string_view list);

/// The last registered handle, head of the list of all; null if there is none.
TraceHandle const* traceHandles();

/// The newest `count` lines of the ring, oldest first, each `function: text`.
std::vector<std::string> traceRingLines(std::size_t count = std::numeric_limits<std::size_t>::max());
/// Prints the newest `count` lines, oldest first, each `file:line level function: text`.
void traceRingDump(std::FILE* to, std::size_t count = std::numeric_limits<std::size_t>::max());
void traceRingClear();

/// Prints each line to `sink` at once, as `traceRingDump` does; null (the initial sink) prints nothing. Returns the
/// former sink.
std::FILE* traceTextSinkIs(std::FILE* sink);

/// Switches levels on and collects what is traced during its lifetime; for tests and for the host's trace view.
///
/// Its levels are added to those that are set; captures may overlap.
/// Main thread only. Neither copied nor moved: the registry holds its address.
class TraceCapture {
 public:
  /// `name` is a file's name or a beginning of names with `*`; files that are loaded later count too.
  explicit TraceCapture(std::string_view name, unsigned levelMask = TraceHandle::allLevels);
  ~TraceCapture();
  TraceCapture(TraceCapture const&) = delete;
  TraceCapture& operator=(TraceCapture const&) = delete;

  /// Lines of the ring's form, `function: text`, in order.
  std::vector<std::string> const& lines() const { return lines_; }
  /// Whether a line has this text in it.
  bool contains(std::string_view text) const;
  void clear() { lines_.clear(); }

 private:
  friend class TraceRegistry;
  std::string name_;
  unsigned levelMask_;
  std::vector<std::string> lines_;
};

namespace Impl {

struct TraceText {
  TraceHandle const* handle;
  char const* file;
  unsigned line;
  unsigned level;
  std::string_view format;
};

template <class Text, class... Args>
consteval TraceSite makeTraceSite() {
  constexpr TraceText text = Text{}();
  static_assert(text.level < TraceHandle::levels, "trace levels are 0 to 9");
  constexpr fmt::format_string<typename TraceArg<Args>::Checked...> checked(text.format);
  static_cast<void>(checked);
  return {text.handle, text.file, text.line, text.level, text.format, &traceUnpack<Args...>};
}

/// The constant record of one call: `Text` is the type of its lambda.
template <class Text, class... Args>
inline constexpr TraceSite traceSite = makeTraceSite<Text, Args...>();

template <class Text, class... Args>
[[gnu::always_inline]] inline void trace(Text, char const* function, Args const&... args) {
  traceRecord<std::decay_t<Args const>...>(traceSite<Text, std::decay_t<Args const>...>, function, args...);
}

}  // namespace Impl
}  // namespace Kiln
