#include <gtest/gtest.h>

#include <csignal>

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("InvariantTest");

namespace {
namespace World {

struct Broken {};
void appendText(std::string&, Broken const&) { INVARIANT(false && "inner"); }

}  // namespace World

int port(int destination) {
  if (destination == 1) return 4789;
  INVARIANT(false && "Invalid Destination");
}

TEST(InvariantDeathTest, tellsConditionFunctionPathValuesAndTheLastTraces) {
  Kiln::TraceCapture capture("InvariantTest");
  TRACE(1, "too old");
  for (int i = 1; i <= 50; ++i) TRACE(1, "step {}", i);
  EXPECT_DEATH(port(2),
               "^INVARIANT failed: false && \"Invalid Destination\"\n"
               "  in port, tests/kiln/InvariantTest.cpp:[0-9]+\n"
               "Last traces:\n"
               "tests/kiln/InvariantTest.cpp:[0-9]+ 1 TestBody: step 1\n(.*\n)*.*step 50\n$");
  int row = port(1), made = 0;
  auto const rows = [&] { return ++made, 8; };
  INVARIANT_MSG(row == 4789, "row {} of {}", row, rows());
  EXPECT_EQ(made, 0);
  EXPECT_DEATH(INVARIANT_MSG(row < 8, "row {} of {}", row, rows()), "failed: row < 8\n.*\n  row 4789 of 8\n");
  // A failure within the text of a trace ends the process once.
  EXPECT_EXIT(TRACE(1, "{}", World::Broken{}), testing::KilledBySignal(SIGABRT), "failed: false && \"inner\"");
}

}  // namespace
