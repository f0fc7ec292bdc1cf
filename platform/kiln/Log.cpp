#include "platform/kiln/Log.h"

#include <algorithm>
#include <cstdio>

#include "platform/kiln/Clock.h"
#include "platform/kiln/Invariant.h"

namespace Kiln {

namespace {

class StandardErrorSink final : public LogSink {
 public:
  void message(LogRecord const& record) override {
    std::fprintf(stderr, "%%TESSEL-%u-%s: %s\n", record.severity, record.name.c_str(), record.text.c_str());
  }
};

LogSink* standardErrorSink() {
  static auto* const sink = new StandardErrorSink;
  return sink;
}

/// Null: the default.
constinit LogSink* currentSink = nullptr;

std::string messageText(std::string_view format, LogString const& arguments) {
  if (format.empty()) return arguments.str(1);
  std::string text;
  unsigned taken = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    char const conversion = format[i] == '%' && i + 1 < format.size() ? format[i + 1] : '\0';
    if (conversion == '%') {
      text += '%';
      ++i;
    } else if ((conversion == 's' || conversion == 'd' || conversion == 'u') && taken < arguments.size()) {
      text += arguments.str(++taken);
      ++i;
    } else {
      text += format[i];
    }
  }
  return text;
}

}  // namespace

char const* LogAction::text() const {
  switch (code_) {
    case 0:
      return text_;
    case 1:
      return "No action is required.";
    case 2:
      return "Report the problem to technical support.";
    default:
      return "If the message recurs, report the problem to technical support.";
  }
}

void LogString::strIs(unsigned index, std::string text) {
  INVARIANT(index >= 1 && index <= most);
  texts_[index - 1] = std::move(text);
  size_ = std::max(size_, index);
}

LogHandle::LogHandle(LogDescriptor const& descriptor, Seconds interval, double perInterval, unsigned rateLimitArgsMask,
                     unsigned hashSeed)
    : descriptor_(descriptor),
      interval_(interval),
      perInterval_(perInterval),
      rateLimitArgsMask_(rateLimitArgsMask),
      idHash_(Impl::mixHash(hashSeed, Impl::textHash(descriptor.name))) {}

bool LogHandle::okToLog(std::uint32_t hash) {
  ++raised_;
  if (interval_ <= 0) return true;
  Seconds const now = activityManager()->clock()->now();
  auto [position, isNew] = windows_.try_emplace(hash, Window{now, 0});
  Window& window = position->second;
  if (!isNew && now - window.start >= interval_) window = {now, 0};
  if (window.count >= perInterval_) {
    ++suppressed_;
    return false;
  }
  ++window.count;
  if (isNew) dropOldWindows(now);
  return true;
}

void LogHandle::dropOldWindows(Seconds now) {
  // Rarely, and only as the map doubles, so that the cost stays even.
  if (windows_.size() < nextSweep_) return;
  std::erase_if(windows_, [&](auto const& entry) { return now - entry.second.start >= interval_; });
  nextSweep_ = std::max<std::size_t>(256, 2 * windows_.size());
}

void LogHandle::log(LogString const& arguments) {
  LogSink& sink = currentSink ? *currentSink : *standardErrorSink();
  sink.message({descriptor_.name, descriptor_.severity, messageText(descriptor_.format, arguments),
                descriptor_.explanation, descriptor_.action.text(), raised_});
}

LogSink* logSinkIs(LogSink* sink) {
  LogSink* const former = std::exchange(currentSink, sink);
  return former ? former : standardErrorSink();
}

std::size_t LogCapture::count(std::string_view name) const {
  return std::count_if(records_.begin(), records_.end(), [&](LogRecord const& record) { return record.name == name; });
}

std::uint32_t Impl::mixHash(std::uint32_t a, std::uint32_t b) {
  std::uint64_t const mixed = (std::uint64_t{a} << 32 | b) * 0x9e3779b97f4a7c15U;
  return static_cast<std::uint32_t>(mixed >> 32 ^ mixed);
}

std::uint32_t Impl::textHash(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (char const character : text) hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
  return hash;
}

}  // namespace Kiln
