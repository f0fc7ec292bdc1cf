#pragma once

#include <fmt/core.h>

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace Kiln {

class TraceHandle;

namespace Impl {

class TraceArgSink;

/// What is known of a trace call when it is compiled; lives in read-only memory.
struct TraceSite {
  TraceHandle const* handle;
  char const* file;
  unsigned line;
  unsigned level;
  std::string_view format;
  /// Reads the arguments back from a slot's bytes.
  void (*unpack)(std::byte const* bytes, TraceArgSink& sink);
};

/// One trace as the ring stores it: the call and a copy of its arguments, not formatted.
struct TraceSlot {
  TraceSite const* site;  ///< Null: nothing to read, or being filled.
  char const* function;
  std::array<std::byte, 240> payload;
};

/// The last traces of the process, the oldest overwritten first.
///
/// Slots are filled after `claim` and read by age. All memory is static: recording allocates nothing.
/// Main thread only. A slot may be claimed while another is being filled (a text function that traces).
class TraceRing {
 public:
  static constexpr std::size_t slots = 4096;

  /// The slot to fill next, marked unreadable until its `site` is set.
  TraceSlot& claim() {
    TraceSlot& slot = slots_[count_++ % slots];
    slot.site = nullptr;
    return slot;
  }
  /// The number of slots that `fromNewest` can return.
  std::size_t size() const { return count_ < slots ? count_ : slots; }
  /// The slot of an age; 0 is the newest. REQUIRES: age < size().
  TraceSlot const& fromNewest(std::size_t age) const { return slots_[(count_ - 1 - age) % slots]; }
  /// Makes the traces of a handle unreadable: their sites are about to be unloaded.
  void forget(TraceHandle const& handle);
  void clear() { count_ = 0; }

  /// A text sink or a capture receives each line at once.
  bool watched = false;

 private:
  std::size_t count_ = 0;
  alignas(64) std::array<TraceSlot, slots> slots_{};  // A slot begins with a cache line.
};

extern TraceRing traceRing;

/// Receives arguments one by one while a line is formatted.
class TraceArgSink {
 public:
  explicit TraceArgSink(void* store) : store_(store) {}
  void add(bool value);
  void add(char value);
  void add(long long value);
  void add(unsigned long long value);
  void add(float value);
  void add(double value);
  void add(void const* value);
  void add(std::string_view value);

 private:
  void* store_;
};

/// `platform/...` for a file of this source tree, the whole path for others.
std::string_view relativePath(std::string_view file);

/// Passes a slot that has just been filled to the text sink and the captures.
void traceDeliver(TraceSlot const& slot);
/// Function name, ": ", text.
std::string traceLine(TraceSlot const& slot);
/// The arguments in `bytes` by the format.
std::string traceText(std::string_view format, std::byte const* bytes, void (*unpack)(std::byte const*, TraceArgSink&));

template <class T>
concept HasAppendText = requires(std::string& text, T const& value) {
  appendText(text, value);
};

/// How arguments of a type are kept. The order of the tests is the order of preference.
enum class TraceKind {
  boolean,
  character,
  signedNumber,
  unsignedNumber,
  real,
  string,
  value,
  text,
  enumeration,
  pointer
};

template <class T>
consteval TraceKind traceKind() {
  // Beyond this a copy would crowd out the other arguments, so the text is taken at once.
  constexpr std::size_t largestCopy = 64;
  if constexpr (std::same_as<T, bool>) {
    return TraceKind::boolean;
  } else if constexpr (std::same_as<T, char>) {
    return TraceKind::character;
  } else if constexpr (std::integral<T>) {
    return std::signed_integral<T> ? TraceKind::signedNumber : TraceKind::unsignedNumber;
  } else if constexpr (std::floating_point<T>) {
    return TraceKind::real;
  } else if constexpr (std::is_null_pointer_v<T>) {
    return TraceKind::pointer;
  } else if constexpr (std::is_convertible_v<T const&, std::string_view>) {
    return TraceKind::string;
  } else if constexpr (HasAppendText<T>) {
    return std::is_trivially_copyable_v<T> && sizeof(T) <= largestCopy ? TraceKind::value : TraceKind::text;
  } else if constexpr (std::is_enum_v<T>) {
    return TraceKind::enumeration;
  } else {
    static_assert(std::is_pointer_v<T>, "a traced type needs an appendText(std::string&, T const&) beside it");
    return TraceKind::pointer;
  }
}

/// Packs arguments of a type into a slot and reads them back. `Checked` is what its part of a format must fit.
template <class T, TraceKind = traceKind<T>()>
struct TraceArg;

template <class T, class As>
struct TraceCopiedArg {
  using Checked = As;
  static constexpr std::size_t room = sizeof(T);
  static std::byte* pack(std::byte* to, std::byte*, T const& value) {
    std::memcpy(to, &value, sizeof value);
    return to + sizeof value;
  }
  static T take(std::byte const*& from) {
    std::array<std::byte, sizeof(T)> bytes;
    std::memcpy(bytes.data(), from, sizeof(T));
    from += sizeof(T);
    return std::bit_cast<T>(bytes);
  }
  static void unpack(std::byte const*& from, TraceArgSink& sink) { sink.add(static_cast<As>(take(from))); }
};

/// Copies as much of a text as fits before `end`; the reader shows where it was cut.
std::byte* packTraceText(std::byte* to, std::byte* end, std::string_view text);
std::string_view takeTraceText(std::byte const*& from);

struct TraceTextArg {
  using Checked = std::string_view;
  static constexpr std::size_t room = 24;
  static void unpack(std::byte const*& from, TraceArgSink& sink) { sink.add(takeTraceText(from)); }
};

template <class T>
struct TraceArg<T, TraceKind::boolean> : TraceCopiedArg<T, bool> {};
template <class T>
struct TraceArg<T, TraceKind::character> : TraceCopiedArg<T, char> {};
template <class T>
struct TraceArg<T, TraceKind::signedNumber> : TraceCopiedArg<T, long long> {};
template <class T>
struct TraceArg<T, TraceKind::unsignedNumber> : TraceCopiedArg<T, unsigned long long> {};
template <class T>
struct TraceArg<T, TraceKind::real> : TraceCopiedArg<T, std::conditional_t<std::same_as<T, float>, float, double>> {};
template <class T>
struct TraceArg<T, TraceKind::enumeration>
    : TraceCopiedArg<T,
                     std::conditional_t<std::is_signed_v<std::underlying_type_t<T>>, long long, unsigned long long>> {};
template <class T>
struct TraceArg<T, TraceKind::pointer> : TraceCopiedArg<T, void const*> {};

template <class T>
struct TraceArg<T, TraceKind::value> : TraceCopiedArg<T, std::string_view> {
  static void unpack(std::byte const*& from, TraceArgSink& sink) {
    std::string text;
    appendText(text, TraceCopiedArg<T, std::string_view>::take(from));
    sink.add(std::string_view(text));
  }
};

template <class T>
struct TraceArg<T, TraceKind::string> : TraceTextArg {
  static std::byte* pack(std::byte* to, std::byte* end, T const& value) {
    if constexpr (std::is_pointer_v<T>) {
      if (value == nullptr) return packTraceText(to, end, "(null)");
    }
    return packTraceText(to, end, value);
  }
};

template <class T>
struct TraceArg<T, TraceKind::text> : TraceTextArg {
  static std::byte* pack(std::byte* to, std::byte* end, T const& value) {
    std::string text;
    appendText(text, value);
    return packTraceText(to, end, text);
  }
};

template <class... Args>
void tracePack([[maybe_unused]] std::byte* to, std::size_t size, Args const&... args) {
  [[maybe_unused]] constexpr std::size_t needed = (std::size_t{0} + ... + TraceArg<Args>::room);
  static_assert(needed <= sizeof(TraceSlot::payload), "too many arguments for one trace");
  // What an argument may take ends where the room of those after it begins, so that a long text starves no other.
  [[maybe_unused]] std::byte* end = to + size - needed;
  ((end += TraceArg<Args>::room, to = TraceArg<Args>::pack(to, end, args)), ...);
}

template <class... Args>
void traceUnpack([[maybe_unused]] std::byte const* bytes, [[maybe_unused]] TraceArgSink& sink) {
  (TraceArg<Args>::unpack(bytes, sink), ...);
}

/// Small arguments go by value, so that a call site that is off need not keep them in memory.
template <class T>
using TraceParam = std::conditional_t<std::is_scalar_v<T>, T const, T const&>;

template <class... Args>
[[gnu::noinline]] void traceRecord(TraceSite const& site, char const* function, TraceParam<Args>... args) {
  TraceSlot& slot = traceRing.claim();
  tracePack<Args...>(slot.payload.data(), slot.payload.size(), args...);
  slot.function = function;
  slot.site = &site;
  if (traceRing.watched) [[unlikely]]
    traceDeliver(slot);
}

/// Text of arguments of the kinds that a trace takes, for messages that are formatted at once.
template <class... Args>
std::string formatText(fmt::format_string<typename TraceArg<std::decay_t<Args const>>::Checked...> format,
                       Args const&... args) {
  std::array<std::byte, sizeof(TraceSlot::payload)> bytes;
  tracePack<std::decay_t<Args const>...>(bytes.data(), bytes.size(), args...);
  fmt::string_view const text = format;
  return traceText({text.data(), text.size()}, bytes.data(), &traceUnpack<std::decay_t<Args const>...>);
}

}  // namespace Impl
}  // namespace Kiln
