#include "platform/kiln/TraceRing.h"

#include <fmt/args.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "platform/kiln/Trace.h"

namespace Kiln::Impl {

namespace {

using ArgStore = fmt::dynamic_format_arg_store<fmt::format_context>;

constexpr std::string_view cutMark = "...";
static_assert(sizeof(TraceSlot::payload) <= std::numeric_limits<unsigned char>::max(), "a text's length is one byte");
static_assert(TraceTextArg::room > 1 + cutMark.size());

template <class T>
void push(void* store, T const& value) {
  static_cast<ArgStore*>(store)->push_back(value);
}

}  // namespace

constinit TraceRing traceRing;

void TraceRing::forget(TraceHandle const& handle) {
  for (TraceSlot& slot : slots_) {
    if (slot.site && slot.site->handle == &handle) slot.site = nullptr;
  }
}

void TraceArgSink::add(bool value) { push(store_, value); }
void TraceArgSink::add(char value) { push(store_, value); }
void TraceArgSink::add(long long value) { push(store_, value); }
void TraceArgSink::add(unsigned long long value) { push(store_, value); }
void TraceArgSink::add(float value) { push(store_, value); }
void TraceArgSink::add(double value) { push(store_, value); }
void TraceArgSink::add(void const* value) { push(store_, value); }
void TraceArgSink::add(std::string_view value) { push(store_, std::string(value)); }

std::byte* packTraceText(std::byte* to, std::byte* end, std::string_view text) {
  std::size_t const room = end - to - 1;
  std::size_t const length = std::min(room, text.size());
  *to++ = static_cast<std::byte>(length);
  std::memcpy(to, text.data(), length);
  if (length < text.size()) std::memcpy(to + length - cutMark.size(), cutMark.data(), cutMark.size());
  return to + length;
}

std::string_view takeTraceText(std::byte const*& from) {
  std::size_t const length = std::to_integer<std::size_t>(*from);
  std::string_view const text(reinterpret_cast<char const*>(from + 1), length);
  from += 1 + length;
  return text;
}

std::string traceText(std::string_view format, std::byte const* bytes,
                      void (*unpack)(std::byte const*, TraceArgSink&)) {
  ArgStore store;
  TraceArgSink sink(&store);
  unpack(bytes, sink);
  try {
    return fmt::vformat(fmt::string_view(format.data(), format.size()), store);
  } catch (fmt::format_error const& error) {
    // A width that is itself an argument is checked only here, and a trace never changes what happens.
    return std::string(format) + " (" + error.what() + ")";
  }
}

std::string traceLine(TraceSlot const& slot) {
  TraceSite const& site = *slot.site;
  return std::string(slot.function) + ": " + traceText(site.format, slot.payload.data(), site.unpack);
}

}  // namespace Kiln::Impl
