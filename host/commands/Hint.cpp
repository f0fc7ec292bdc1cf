#include "host/commands/Hint.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Host {

namespace {

/// How many letters have to be added, removed, replaced, or exchanged with their neighbours.
std::size_t distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> beforeLast, last(to.size() + 1), next(to.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); ++i) {
    next[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      bool const same = from[i - 1] == to[j - 1];
      next[j] = std::min({last[j] + 1, next[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      bool const exchanged = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (exchanged) next[j] = std::min(next[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::exchange(last, next);
  }
  return last.back();
}

}  // namespace

std::string hintFor(std::string_view typed, std::vector<std::string> const& known) {
  std::string const* nearest = nullptr;
  auto least = std::max<std::size_t>(1, typed.size() / 3) + 1;
  for (auto const& word : known) {
    bool const begins = typed.size() > 1 && word.starts_with(typed);
    auto const steps = begins ? 1 : distance(typed, word);
    if (steps < least) least = steps, nearest = &word;
  }
  return nearest ? "did you mean " + *nearest + "?" : "";
}

}  // namespace Host
