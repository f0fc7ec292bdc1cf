#include "platform/kiln/Invariant.h"

#include <gtest/gtest.h>

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("InvariantTest");

namespace {
namespace World {

struct Broken {};
void appendText(std::string&, Broken const&) { INVARIANT(false && "inner"); }

}  // namespace World

int port(int destination) {
  switch (destination) {
    case 1:
      return 4789;
    default:
      break;
  }
  INVARIANT(false && "Invalid Destination");
}

TEST(InvariantDeathTest, tellsConditionFunctionPathAndTheLastTraces) {
  Kiln::TraceCapture capture("InvariantTest");
  TRACE(1, "too old");
  for (int i = 1; i <= 50; ++i) TRACE(1, "step {}", i);
  EXPECT_DEATH(port(2),
               "^INVARIANT failed: false && \"Invalid Destination\"\n"
               "  in port, tests/kiln/invariant_test.cpp:[0-9]+\n"
               "Last traces:\n"
               "tests/kiln/invariant_test.cpp:[0-9]+ 1 TestBody: step 1\n(.*\n)*.*step 50\n$");
  EXPECT_EQ(port(1), 4789);
}

TEST(InvariantDeathTest, addsWhatWasFound) {
  int row = 8;
  int made = 0;
  auto const rows = [&] { return ++made, 8; };
  INVARIANT_MSG(row == 8, "row {} of {}", row, rows());
  EXPECT_EQ(made, 0);
  EXPECT_DEATH(INVARIANT_MSG(row < 8, "row {} of {}", row, rows()), "failed: row < 8\n.*\n  row 8 of 8\n");
}

TEST(InvariantDeathTest, aTraceThatFailsInItsTextEndsTheProcessOnce) {
  Kiln::TraceCapture capture("InvariantTest");
  EXPECT_DEATH(TRACE(1, "{}", World::Broken{}), "failed: false && \"inner\"");
}

}  // namespace
