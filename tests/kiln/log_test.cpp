#include "platform/kiln/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "platform/tessel/LogMessages.h"

namespace {
namespace World {

struct Address {
  int last;
};
void appendText(std::string& text, Address const& address) { text += "10.0.0." + std::to_string(address.last); }

}  // namespace World

using testing::ElementsAre;
using World::Address;

constexpr Kiln::LogDescriptor full{"TABLE_FULL", "No row for %s in table %u.", "Explained.", "Act.", 3, 0};
constexpr Kiln::LogDescriptor plain{"PLAIN", "100%% sure", "", 1U, 6, 0};
constexpr Kiln::LogDescriptor ready{"READY", "", "", 2U, 4, 0};

class LogTest : public testing::Test {
 protected:
  std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (auto const& record : capture.records()) texts.push_back(record.text);
    return texts;
  }

  Kiln::VirtualClock clock;
  Kiln::ClockScope clockScope{clock};
  Kiln::LogCapture capture;
};

TEST_F(LogTest, aRecordCarriesTheDescriptorAndItsArguments) {
  Kiln::LogHandle handle(full, 0, 1.0, 0, 0);
  Kiln::log(handle, Address{7}, std::uint16_t{70});
  ASSERT_EQ(capture.records().size(), 1U);
  auto const& record = capture.records()[0];
  EXPECT_EQ(record.name, "TABLE_FULL");
  EXPECT_EQ(record.severity, 3U);
  EXPECT_EQ(record.text, "No row for 10.0.0.7 in table 70.");
  EXPECT_EQ(record.explanation, "Explained.");
  EXPECT_EQ(record.action, "Act.");
  EXPECT_EQ(record.count, 1U);
}

TEST_F(LogTest, conversionsWithoutArgumentAndReadyTextsStand) {
  Kiln::LogHandle fullHandle(full, 0, 1.0, 0, 0);
  Kiln::LogHandle plainHandle(plain, 0, 1.0, 0, 0);
  Kiln::LogHandle readyHandle(ready, 0, 1.0, 0, 0);
  Kiln::log(fullHandle);
  Kiln::log(fullHandle, "%s", 1);
  Kiln::log(plainHandle);
  Kiln::log(readyHandle, "ready 50%");
  EXPECT_THAT(texts(),
              ElementsAre("No row for %s in table %u.", "No row for %s in table 1.", "100% sure", "ready 50%"));
  EXPECT_EQ(capture.records()[2].action, "No action is required.");
}

TEST_F(LogTest, anIntervalOfZeroNeverLimits) {
  Kiln::LogHandle handle(full, 0, 1.0, 2, 0);
  for (int i = 0; i < 3; ++i) Kiln::log(handle, Address{7}, 1);
  EXPECT_EQ(capture.count("TABLE_FULL"), 3U);
  EXPECT_EQ(handle.suppressed(), 0U);
}

TEST_F(LogTest, equalSelectedArgumentsAreRaisedOnceInTheInterval) {
  Kiln::LogHandle handle(full, 30.0, 1.0, 2, 0);
  Kiln::log(handle, Address{7}, 1);
  Kiln::log(handle, Address{7}, 1);
  Kiln::log(handle, Address{8}, 1);
  // The second argument is not selected.
  Kiln::log(handle, Address{8}, 2);
  EXPECT_THAT(texts(), ElementsAre("No row for 10.0.0.7 in table 1.", "No row for 10.0.0.8 in table 1."));
  EXPECT_EQ(handle.raised(), 4U);
  EXPECT_EQ(handle.suppressed(), 2U);

  clock.advance(29.9);
  Kiln::log(handle, Address{7}, 1);
  EXPECT_EQ(capture.records().size(), 2U);
  clock.advance(0.1);
  capture.clear();
  Kiln::log(handle, Address{7}, 3);
  Kiln::log(handle, Address{7}, 3);
  EXPECT_THAT(texts(), ElementsAre("No row for 10.0.0.7 in table 3."));
  EXPECT_EQ(capture.records()[0].count, 6U);
}

TEST_F(LogTest, handlesAreLimitedApartAndWithoutSelectionAsAWhole) {
  Kiln::LogHandle one(full, 30.0, 1.0, 0, 0);
  Kiln::LogHandle other(plain, 30.0, 2.0, 0, 0);
  for (int i = 0; i < 3; ++i) {
    Kiln::log(one, Address{i}, i);
    Kiln::log(other);
  }
  EXPECT_EQ(capture.count("TABLE_FULL"), 1U);
  EXPECT_EQ(capture.count("PLAIN"), 2U);
}

TEST_F(LogTest, aFloodOfDifferentArgumentsIsForgottenAfterTheInterval) {
  Kiln::LogHandle handle(full, 30.0, 1.0, 2, 0);
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 2000; ++i) Kiln::log(handle, Address{i}, 0);
    EXPECT_EQ(handle.suppressed(), 0U);
    clock.advance(30);
  }
  EXPECT_EQ(capture.records().size(), 6000U);
}

TEST_F(LogTest, theDefaultSinkPrintsTheSyslogForm) {
  Kiln::LogHandle handle(full, 0, 1.0, 0, 0);
  Kiln::LogSink* const mine = Kiln::logSinkIs(nullptr);
  EXPECT_EQ(mine, &capture);
  testing::internal::CaptureStderr();
  Kiln::log(handle, "a", "b");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "%TESSEL-3-TABLE_FULL: No row for a in table b.\n");
  EXPECT_NE(Kiln::logSinkIs(mine), nullptr);
}

TEST(LogMessages, areNamedOnceAndComplete) {
  std::set<std::string> names;
  for (auto const* descriptor : TesselLog::descriptors()) {
    EXPECT_TRUE(names.insert(descriptor->name).second) << descriptor->name;
    EXPECT_THAT(descriptor->severity, testing::AnyOf(3U, 4U, 6U)) << descriptor->name;
    EXPECT_NE(std::string(descriptor->action.text()), "") << descriptor->name;
  }
  EXPECT_EQ(names.size(), 32U);
}

}  // namespace
