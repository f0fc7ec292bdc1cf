#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/kiln/Seconds.h"

namespace Kiln {

/// What the operator should do about a message: a text of its own, or one of the codes 1 (nothing), 2 and 3 (report
/// it).
class LogAction {
 public:
  constexpr LogAction(char const* text) : text_(text) {}  // Implicit: descriptors are tables of constants.
  constexpr LogAction(unsigned code) : code_(code) {}
  /// The text, also for a code. Never null.
  char const* text() const;
  /// 0 where the action has a text of its own.
  constexpr unsigned code() const { return code_; }

 private:
  char const* text_ = nullptr;
  unsigned code_ = 0;
};

/// A kind of operator message. A constant of the program.
struct LogDescriptor {
  char const* name;
  char const* format;  ///< %s, %d and %u are replaced by the arguments in order, %% is a percent sign.
  char const* explanation;
  LogAction action;
  unsigned severity;  ///< 3 error, 4 warning, 6 information.
  unsigned reserved;
};

/// A message as it was raised.
struct LogRecord {
  std::string name;
  unsigned severity;
  std::string text;
  std::string explanation;
  std::string action;
  std::uint64_t count;  ///< Ordinal among its handle's messages, suppressed ones included.
};

/// The arguments of one message as text.
class LogString {
 public:
  static constexpr unsigned most = 8;
  /// Arguments count from 1. REQUIRES: 1 <= index <= most.
  void strIs(unsigned index, std::string text);
  /// Empty for an argument that was not set.
  std::string const& str(unsigned index) const { return texts_[index - 1]; }
  /// The highest index that was set.
  unsigned size() const { return size_; }

 private:
  std::array<std::string, most> texts_;
  unsigned size_ = 0;
};

/// Raises the messages of one descriptor in one source file and limits their rate.
///
/// Built at load time as a static of the file. Reads the activity manager's clock; sends to the sink that is set.
/// Main thread only. The descriptor must live as long.
class LogHandle {
 public:
  /// At most `perInterval` messages of equal selected arguments within `interval` seconds; interval 0 never limits.
  /// Bit n of `rateLimitArgsMask` selects argument n, counted from 1; with no argument selected all messages of the
  /// handle count as equal. `hashSeed` is part of `idHash` and distinguishes handles of one descriptor.
  LogHandle(LogDescriptor const& descriptor, Seconds interval, double perInterval, unsigned rateLimitArgsMask,
            unsigned hashSeed);

  LogDescriptor const& descriptor() const { return descriptor_; }
  unsigned rateLimitArgsMask() const { return rateLimitArgsMask_; }
  std::uint32_t idHash() const { return idHash_; }

  /// Counts a message of this hash. True if the rate limit allows it now.
  bool okToLog(std::uint32_t hash);
  /// Sends the message to the sink. REQUIRES: `okToLog` returned true for it.
  void log(LogString const& arguments);

  /// How often a message was raised, and how many of these were suppressed.
  std::uint64_t raised() const { return raised_; }
  std::uint64_t suppressed() const { return suppressed_; }

 private:
  struct Window {
    Seconds start;
    double count;
  };
  void dropOldWindows(Seconds now);

  LogDescriptor const& descriptor_;
  Seconds interval_;
  double perInterval_;
  unsigned rateLimitArgsMask_;
  std::uint32_t idHash_;
  std::uint64_t raised_ = 0;
  std::uint64_t suppressed_ = 0;
  std::size_t nextSweep_ = 256;
  std::unordered_map<std::uint32_t, Window> windows_;  ///< By hash; empty for handles that never limit.
};

/// Receives operator messages.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void message(LogRecord const& record) = 0;
};

/// Sends messages to `sink` from now on; null selects the default, which prints `%TESSEL-3-NAME: text` to standard
/// error. Returns the former sink, never null. The sink is the caller's and must outlive its use.
LogSink* logSinkIs(LogSink* sink);

/// Collects the messages that are raised during its lifetime, in place of the former sink; for tests and the host.
class LogCapture final : public LogSink {
 public:
  LogCapture() : former_(logSinkIs(this)) {}
  ~LogCapture() override { logSinkIs(former_); }
  LogCapture(LogCapture const&) = delete;
  LogCapture& operator=(LogCapture const&) = delete;

  void message(LogRecord const& record) override { records_.push_back(record); }
  std::vector<LogRecord> const& records() const { return records_; }
  /// How many messages of a name were collected.
  std::size_t count(std::string_view name) const;
  void clear() { records_.clear(); }

 private:
  LogSink* former_;
  std::vector<LogRecord> records_;
};

/// Text of a message's argument: a string, a number, or a type with an `appendText(std::string&, T const&)` beside it.
template <class T>
std::string valueToString(T const& value) {
  if constexpr (std::same_as<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_convertible_v<T const&, std::string_view>) {
    return std::string(std::string_view(value));
  } else if constexpr (std::is_arithmetic_v<T>) {
    return std::to_string(value);
  } else {
    std::string text;
    appendText(text, value);
    return text;
  }
}

namespace Impl {

std::uint32_t mixHash(std::uint32_t a, std::uint32_t b);
std::uint32_t textHash(std::string_view text);

/// Hash of those arguments that the mask selects: bit n selects argument n, counted from 1.
template <class... Args>
std::uint32_t logArgsHash([[maybe_unused]] unsigned mask, Args const&... args) {
  std::uint32_t hash = 0;
  [[maybe_unused]] unsigned index = 0;
  ((++index, hash = (mask >> index & 1U) != 0 ? mixHash(hash, textHash(valueToString(args))) : hash), ...);
  return hash;
}

}  // namespace Impl

/// Raises a message with arguments for its format, unless the rate limit suppresses it. A message whose descriptor has
/// an empty format is its first argument: a ready text.
template <class... Args>
void log(LogHandle& handle, Args const&... args) {
  static_assert(sizeof...(args) <= LogString::most);
  if (!handle.okToLog(Impl::mixHash(handle.idHash(), Impl::logArgsHash(handle.rateLimitArgsMask(), args...)))) return;
  LogString texts;
  [[maybe_unused]] unsigned index = 0;
  (texts.strIs(++index, valueToString(args)), ...);
  handle.log(texts);
}

}  // namespace Kiln
