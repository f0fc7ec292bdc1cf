#include "platform/kiln/Trace.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace Kiln {

namespace {

bool fits(std::string_view pattern, std::string_view name) {
  if (pattern.ends_with('*')) return name.starts_with(pattern.substr(0, pattern.size() - 1));
  return pattern == name;
}

std::optional<unsigned> parseMask(std::string_view text) {
  bool const hex = text.starts_with("0x") || text.starts_with("0X");
  if (hex) text.remove_prefix(2);
  unsigned mask = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), mask, hex ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size() || mask > TraceHandle::allLevels) return std::nullopt;
  return mask;
}

void print(std::FILE* to, Impl::TraceSite const& site, std::string const& line) {
  std::string_view const file = Impl::relativePath(site.file);
  std::fprintf(to, "%.*s:%u %u %s\n", static_cast<int>(file.size()), file.data(), site.line, site.level, line.c_str());
}

}  // namespace

/// The loaded handles, the masks that were set for them, and the readers.
class TraceRegistry {
 public:
  struct Rule {
    std::string pattern;
    unsigned mask;
  };

  void handleIs(TraceHandle& handle) {
    handle.next_ = first_;
    first_ = &handle;
    review(handle);
  }

  void handleDel(TraceHandle& handle) {
    TraceHandle** link = &first_;
    while (*link && *link != &handle) link = &(*link)->next_;
    if (*link) *link = handle.next_;
    Impl::traceRing.forget(handle);
  }

  TraceHandle const* handles() const { return first_; }

  std::string rulesIs(std::string_view list) {
    std::vector<Rule> rules;
    while (!list.empty()) {
      std::string_view const item = list.substr(0, list.find(','));
      list.remove_prefix(std::min(list.size(), item.size() + 1));
      std::size_t const equals = item.find('=');
      if (equals == 0 || equals == std::string_view::npos) {
        return "trace masks: \"" + std::string(item) + "\" is not of the form NAME=MASK";
      }
      std::string_view const name = item.substr(0, equals);
      auto const mask = parseMask(item.substr(equals + 1));
      if (!mask) return "trace masks: the mask of \"" + std::string(item) + "\" is not a number from 0 to 0x3ff";
      if (name != "*" && !known(name)) return "trace masks: no source file is named \"" + std::string(name) + "\"";
      rules.push_back({std::string(name), *mask});
    }
    rules_ = std::move(rules);
    reviewAll();
    return {};
  }

  std::FILE* sinkIs(std::FILE* sink) {
    std::FILE* const former = std::exchange(sink_, sink);
    reviewAll();
    return former;
  }

  void captureIs(TraceCapture& capture) {
    captures_.push_back(&capture);
    reviewAll();
  }

  void captureDel(TraceCapture& capture) {
    std::erase(captures_, &capture);
    reviewAll();
  }

  void deliver(Impl::TraceSlot const& slot) {
    Impl::TraceSite const& site = *slot.site;
    std::string const line = Impl::traceLine(slot);
    if (sink_) print(sink_, site, line);
    for (TraceCapture* capture : captures_) {
      if ((capture->levelMask_ >> site.level & 1U) != 0 && fits(capture->name_, site.handle->name())) {
        capture->lines_.push_back(line);
      }
    }
  }

 private:
  bool known(std::string_view pattern) const {
    for (TraceHandle const* handle = first_; handle; handle = handle->next_) {
      if (fits(pattern, handle->name_)) return true;
    }
    return false;
  }

  void review(TraceHandle& handle) {
    unsigned mask = 0;
    for (Rule const& rule : rules_) {
      if (fits(rule.pattern, handle.name_)) mask = rule.mask;
    }
    for (TraceCapture const* capture : captures_) {
      if (fits(capture->name_, handle.name_)) mask |= capture->levelMask_;
    }
    handle.mask_ = mask;
  }

  void reviewAll() {
    Impl::traceRing.watched = sink_ || !captures_.empty();
    for (TraceHandle* handle = first_; handle; handle = handle->next_) review(*handle);
  }

  TraceHandle* first_ = nullptr;
  std::vector<Rule> rules_;
  std::vector<TraceCapture*> captures_;
  std::FILE* sink_ = nullptr;
};

namespace {

// Created by the first file that registers and never destroyed: files are unloaded after all else was destroyed.
TraceRegistry& registry() {
  static auto& instance = *new TraceRegistry;
  return instance;
}

template <class Visit>
void visitRing(std::size_t count, Visit visit) {
  for (std::size_t age = std::min(count, Impl::traceRing.size()); age-- > 0;) {
    Impl::TraceSlot const& slot = Impl::traceRing.fromNewest(age);
    if (slot.site) visit(slot);
  }
}

}  // namespace

TraceRegistration::TraceRegistration(TraceHandle& handle) : handle_(handle) { registry().handleIs(handle); }
TraceRegistration::~TraceRegistration() { registry().handleDel(handle_); }

std::string traceMasksIs(std::string_view list) { return registry().rulesIs(list); }
TraceHandle const* traceHandles() { return registry().handles(); }
std::FILE* traceTextSinkIs(std::FILE* sink) { return registry().sinkIs(sink); }

std::vector<std::string> traceRingLines(std::size_t count) {
  std::vector<std::string> lines;
  visitRing(count, [&](Impl::TraceSlot const& slot) { lines.push_back(Impl::traceLine(slot)); });
  return lines;
}

void traceRingDump(std::FILE* to, std::size_t count) {
  visitRing(count, [&](Impl::TraceSlot const& slot) { print(to, *slot.site, Impl::traceLine(slot)); });
}

void traceRingClear() { Impl::traceRing.clear(); }

TraceCapture::TraceCapture(std::string_view name, unsigned levelMask) : name_(name), levelMask_(levelMask) {
  registry().captureIs(*this);
}

TraceCapture::~TraceCapture() { registry().captureDel(*this); }

bool TraceCapture::contains(std::string_view text) const {
  return std::any_of(lines_.begin(), lines_.end(),
                     [&](std::string const& line) { return line.find(text) != std::string::npos; });
}

void Impl::traceDeliver(TraceSlot const& slot) { registry().deliver(slot); }

std::string_view Impl::relativePath(std::string_view file) {
  constexpr std::string_view here = __FILE__;
  constexpr std::string_view name = "platform/kiln/Trace.cpp";
  static_assert(here.ends_with(name));
  constexpr std::string_view root = here.substr(0, here.size() - name.size());
  return file.starts_with(root) ? file.substr(root.size()) : file;
}

}  // namespace Kiln
