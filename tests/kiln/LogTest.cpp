#include <gmock/gmock.h>

#include "platform/kiln/Clock.h"
#include "platform/kiln/Log.h"

namespace {
namespace World {

struct Address {
  int last;
};
void appendText(std::string& text, Address const& address) { text += "10.0.0." + std::to_string(address.last); }

}  // namespace World

using World::Address;

constexpr Kiln::LogDescriptor full{"FULL", "No row for %s in table %u.", "Explained.", "Act.", 3, 0};
constexpr Kiln::LogDescriptor plain{"PLAIN", "sure: %d%%", "", 1U, 6, 0};
constexpr Kiln::LogDescriptor ready{"READY", "", "", 2U, 4, 0};

class LogTest : public testing::Test {
 protected:
  /// What was raised since the last call, a line each.
  std::string raised() {
    std::string texts;
    for (auto const& r : capture.records())
      texts += r.name + std::to_string(r.severity) + " " + r.text + " " + r.explanation + r.action + '\n';
    capture.clear();
    return texts;
  }

  Kiln::VirtualClock clock;
  Kiln::ClockScope clockScope{clock};
  Kiln::LogCapture capture;
};

TEST_F(LogTest, theDescriptorsFormatTakesTheArgumentsThatThereAre) {
  Kiln::LogHandle fullHandle(full, 0, 1.0, 2, 0), plainHandle(plain, 0, 1.0, 0, 0), readyHandle(ready, 0, 1.0, 0, 0);
  Kiln::log(fullHandle);
  Kiln::log(fullHandle, "%s", 1);
  Kiln::log(plainHandle, 100);
  Kiln::log(readyHandle, "ready 50%");
  // An interval of 0 never limits.
  for (int i = 0; i < 2; ++i) Kiln::log(fullHandle, Address{7}, std::uint16_t{70});
  EXPECT_EQ(raised(),
            "FULL3 No row for %s in table %u. Explained.Act.\nFULL3 No row for %s in table 1. Explained.Act.\n"
            "PLAIN6 sure: 100% No action is required.\nREADY4 ready 50% Report the problem to technical support.\n"
            "FULL3 No row for 10.0.0.7 in table 70. Explained.Act.\n"
            "FULL3 No row for 10.0.0.7 in table 70. Explained.Act.\n");
  Kiln::LogSink* const mine = Kiln::logSinkIs(nullptr);
  EXPECT_EQ(mine, &capture);
  testing::internal::CaptureStderr();
  Kiln::log(fullHandle, "a", "b");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "%TESSEL-3-FULL: No row for a in table b.\n");
  EXPECT_NE(Kiln::logSinkIs(mine), nullptr);
}

TEST_F(LogTest, equalSelectedArgumentsAreRaisedOnceInTheInterval) {
  Kiln::LogHandle handle(full, 30.0, 1.0, 2, 0);
  // The second argument is not selected.
  for (auto const& [address, table] : {std::pair{7, 1}, {7, 1}, {8, 1}, {8, 2}})
    Kiln::log(handle, Address{address}, table);
  EXPECT_EQ(raised(),
            "FULL3 No row for 10.0.0.7 in table 1. Explained.Act.\n"
            "FULL3 No row for 10.0.0.8 in table 1. Explained.Act.\n");
  EXPECT_EQ(handle.suppressed(), 2U);
  clock.advance(29.9);
  Kiln::log(handle, Address{7}, 1);
  clock.advance(0.1);
  for (int i = 0; i < 2; ++i) Kiln::log(handle, Address{7}, 3);
  ASSERT_EQ(capture.records().size(), 1U);
  EXPECT_EQ(capture.records()[0].count, 6U);
  EXPECT_EQ(handle.raised(), 7U);
}

TEST_F(LogTest, handlesAreLimitedApartAndWithoutSelectionAsAWhole) {
  Kiln::LogHandle one(full, 30.0, 1.0, 0, 0), other(plain, 30.0, 2.0, 0, 0);
  for (int i = 0; i < 3; ++i) {
    Kiln::log(one, Address{i}, i);
    Kiln::log(other);
  }
  EXPECT_EQ(capture.count("FULL"), 1U);
  EXPECT_EQ(capture.count("PLAIN"), 2U);
}

}  // namespace
