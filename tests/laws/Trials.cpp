#include "tests/laws/Trials.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest-spi.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>

extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace AgentTest {

namespace {

constexpr unsigned longestTrial = 60;  ///< Seconds.
constexpr std::chrono::seconds longestShrink{60};
constexpr std::size_t longestReport = 8000;

struct Range {
  std::uint64_t first, last;
};

Range seedRange(unsigned count) {
  auto const* text = std::getenv("TESSEL_SEEDS");
  if (!text) return {1, count};
  char* end = nullptr;
  auto const first = std::strtoull(text, &end, 10);
  return {first, *end == '-' ? std::strtoull(end + 1, nullptr, 10) : first};
}

std::string command(std::uint64_t seed) {
  auto const& test = *testing::UnitTest::GetInstance()->current_test_info();
  // The seed alone decides which share tries it.
  std::string suite = test.test_suite_name(), name = test.name();
  return fmt::format("TESSEL_SEEDS={} {} --gtest_filter='{}.{}/*'", seed, program_invocation_name, suite,
                     name.substr(0, name.find('/')));
}

/// What a process that dies in a trial says last.
std::string lastWords;
void sayLastWords() {
  if (write(STDERR_FILENO, lastWords.data(), lastWords.size()) < 0) std::_Exit(3);
}
void onSignal(int signal) {
  sayLastWords();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

struct Trial {
  Law law;
  ChipKind kind;
  Story story;

  /// What the law finds; empty if it holds.
  std::string run() const {
    testing::TestPartResultArray results;
    alarm(longestTrial);
    {
      testing::ScopedFakeTestPartResultReporter const reporter(
          testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
      law(kind, story);
    }
    alarm(0);
    std::string found;
    for (int i = 0; i < results.size(); ++i) found.append(results.GetTestPartResult(i).message()).append("\n");
    return found;
  }
  /// The same in a process of its own, whose end by a signal is found, too.
  std::string runApart() const {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return "no pipe";
    auto const child = fork();
    if (child == 0) {
      for (auto const fd : {STDOUT_FILENO, STDERR_FILENO}) dup2(ends[1], fd);
      lastWords = "too long\n";
      auto const found = run();
      auto const written = write(ends[1], found.data(), found.size());
      _exit(found.empty() && written == 0 ? 0 : 1);
    }
    close(ends[1]);
    std::string found;
    char part[4096];
    for (ssize_t length = 0; (length = read(ends[0], part, sizeof part)) > 0;) {
      found.append(part, static_cast<std::size_t>(length));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return "";
    if (WIFSIGNALED(status)) found += fmt::format("ended by signal {}\n", WTERMSIG(status));
    return found.empty() ? "failed" : found;
  }
};

/// Takes out events while the trial fails without them. Returns what the last failure found.
std::string shrink(Trial& trial, std::string found) {
  auto const until = std::chrono::steady_clock::now() + longestShrink;
  for (auto length = trial.story.events.size(); length > 0;) {
    bool cut = false;
    for (std::size_t from = 0; from < trial.story.events.size();) {
      if (std::chrono::steady_clock::now() > until) return found;
      auto shorter = trial;
      auto& events = shorter.story.events;
      auto const first = events.begin() + static_cast<std::ptrdiff_t>(from);
      events.erase(first, first + static_cast<std::ptrdiff_t>(std::min(length, events.size() - from)));
      if (auto const now = shorter.runApart(); !now.empty()) {
        found = now;
        trial = std::move(shorter);
        cut = true;
      } else {
        from += length;
      }
    }
    if (!cut || length > 1) length = length > 1 ? (length + 1) / 2 : 0;
  }
  return found;
}

}  // namespace

void tryLaw(Trials const& trials, unsigned share) {
  auto const range = seedRange(trials.seeds);
  bool const alone = range.first == range.last;
  for (auto const signal : {SIGABRT, SIGALRM}) std::signal(signal, onSignal);
  if (__sanitizer_set_death_callback) __sanitizer_set_death_callback(sayLastWords);
  for (auto seed = range.first; seed <= range.last; ++seed) {
    if (seed % kShares != share) continue;
    for (auto const& kind : chipKinds({trials.profiles[seed % trials.profiles.size()]})) {
      Trial trial{trials.law, kind, trials.story(seed, kind.profile)};
      lastWords = fmt::format("\non {}: {}\n", kindText(kind), command(seed));
      auto found = alone ? trial.runApart() : trial.run();
      if (found.empty()) continue;
      found = shrink(trial, found);
      if (found.size() > longestReport) found.resize(longestReport);
      FAIL() << "on " << kindText(kind) << ": " << command(seed) << '\n' << trial.story.text() << found;
    }
  }
}

}  // namespace AgentTest
