#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/laws/Story.h"

namespace AgentTest {

/// A law: what must hold after a story on a chip. States what it finds by gtest's expectations.
using Law = void (*)(ChipKind const& kind, Story const& story);

/// What a law is tried with.
struct Trials {
  Law law;
  std::function<Story(std::uint64_t seed, std::string const& profile)> story;
  std::vector<std::string> profiles{"cascaded",     "flat",     "compact", "oneHeader", "flooding",
                                    "flatFlooding", "tinyFlat", "tiny",    "fewMembers"};  ///< By seed, in turn.
  unsigned seeds = 144;  ///< From 1 on, unless the environment says otherwise.
};

/// Suites of laws are run in this many shares, so that a test runner has something to spread.
inline constexpr unsigned kShares = 4;

/// Tries a law with the stories of one share's seeds, on chips of both ways of completion, up to the first that fails.
///
/// TESSEL_SEEDS=5 or TESSEL_SEEDS=1-5000 name the stories to try instead of the first `seeds`. A failure says how to
/// repeat it and shows the story, cut down to events all of which it takes. A trial that ends the process names its
/// seed; alone (TESSEL_SEEDS=5) it is run in a process of its own and cut down, too.
void tryLaw(Trials const& trials, unsigned share);

}  // namespace AgentTest
