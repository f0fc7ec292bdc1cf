#include "platform/kiln/Trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

KILN_TRACE_FILE("TraceTest");

// A second file of the same name, as far as the registry can tell.
namespace Elsewhere {
KILN_TRACE_FILE("TraceTestElsewhere");
static void traced() { TRACE(1, "elsewhere"); }
}  // namespace Elsewhere

// A file that is loaded when a test says so.
namespace PlugIn {
static constinit Kiln::TraceHandle kilnTraceHandle("PlugIn");
static void traced() {
  TRACE(1, "from the plug-in");
  TRACE(2, "off");
}
}  // namespace PlugIn

namespace {
namespace World {

enum class Family : unsigned char { none, ipv4 = 1, ipv6 = 2 };

struct Address {
  std::array<unsigned char, 20> bytes{};
};
void appendText(std::string& text, Address const& address) { text += "10.0.0." + std::to_string(address.bytes[3]); }

struct Owner {
  std::shared_ptr<std::string> name;
};
void appendText(std::string& text, Owner const& owner) { text += *owner.name; }

struct Row {
  std::array<unsigned, 40> fields{};
};
void appendText(std::string& text, Row const& row) { text += "row " + std::to_string(row.fields[39]); }

struct Talkative {
  int value;
};
void appendText(std::string& text, Talkative const& talkative) {
  TRACE(2, "asked");
  text += std::to_string(talkative.value);
}

}  // namespace World

using testing::ElementsAre;

std::string only(Kiln::TraceCapture& capture) {
  std::string const line = capture.lines().size() == 1 ? capture.lines()[0] : "not one line";
  capture.clear();
  return line;
}

class TraceTest : public testing::Test {
 protected:
  ~TraceTest() override { Kiln::traceMasksIs(""); }
};

TEST_F(TraceTest, offEvaluatesNothingAndCostsNoSlot) {
  Kiln::traceRingClear();
  int evaluated = 0;
  TRACE(1, "{}", ++evaluated);
  {
    Kiln::TraceCapture capture("TraceTest", 1U << 1);
    TRACE(0, "{}", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    TRACE(1, "{}", ++evaluated);
  }
  TRACE(1, "{}", ++evaluated);
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(Kiln::traceRingLines().size(), 1U);
}

TEST_F(TraceTest, isAnExpressionThatReturns) {
  Kiln::TraceCapture capture("TraceTest");
  auto const handler = [](bool missing) {
    if (missing) return TRACE_IN("handler", 1, " tnlIdMap not found");
    TRACE_IN("handler", 1, "found");
  };
  handler(true);
  EXPECT_EQ(only(capture), "handler:  tnlIdMap not found");
}

TEST_F(TraceTest, readsBackEveryKindOfArgument) {
  Kiln::TraceCapture capture("TraceTest");
  World::Address address;
  address.bytes[3] = 7;
  TRACE(1, "vtep {} from {:>9}|", address, address);
  EXPECT_EQ(only(capture), "TestBody: vtep 10.0.0.7 from  10.0.0.7|");

  std::uint8_t const small = 200;
  TRACE(9, "{} {:#x} {} {} {} {}", small, 0xfffffffeU, -3LL, true, 'c', World::Family::ipv6);
  EXPECT_EQ(only(capture), "TestBody: 200 0xfffffffe -3 true c 2");

  TRACE(9, "{} {:.2f} {}", 0.1F, 2.5, static_cast<void*>(nullptr));
  EXPECT_EQ(only(capture), "TestBody: 0.1 2.50 0x0");

  std::string const text = "two";
  char const* const none = nullptr;
  TRACE(9, "{} {} {} {}", "one", text, std::string_view("three"), none);
  EXPECT_EQ(only(capture), "TestBody: one two three (null)");

  World::Row row;
  row.fields[39] = 5;
  TRACE(9, "{} {} {{}}", World::Owner{std::make_shared<std::string>("owned")}, row);
  EXPECT_EQ(only(capture), "TestBody: owned row 5 {}");
}

TEST_F(TraceTest, argumentsAreThoseOfTheCallNotOfTheReading) {
  Kiln::TraceCapture capture("TraceTest", 2);
  std::string text = "before";
  TRACE(1, "{}", text);
  text = "after!";
  EXPECT_THAT(Kiln::traceRingLines(1), ElementsAre("TestBody: before"));
}

TEST_F(TraceTest, aLongTextIsCutAndStarvesNoOther) {
  Kiln::TraceCapture capture("TraceTest");
  std::string const huge(100'000, 'x');
  World::Address const address;
  TRACE(1, "{}|{}|{}|{}", huge, huge, 42, address);
  std::string const line = only(capture);
  EXPECT_THAT(line, testing::EndsWith("x...|42|10.0.0.0"));
  EXPECT_LT(line.size(), sizeof(Kiln::Impl::TraceSlot));
  // Both have at least their own room.
  EXPECT_THAT(line, testing::HasSubstr("xxxxxxxxxx...|xxxxxxxxxx"));

  std::string const fits(sizeof(Kiln::Impl::TraceSlot::payload) - 1, 'y');
  TRACE(1, "{}", fits);
  EXPECT_EQ(only(capture), "TestBody: " + fits);
  TRACE(1, "{}", fits + 'y');
  EXPECT_EQ(only(capture), "TestBody: " + fits.substr(3) + "...");
}

TEST_F(TraceTest, theRingKeepsTheNewest) {
  Kiln::TraceCapture capture("TraceTest");
  constexpr std::size_t slots = Kiln::Impl::TraceRing::slots;
  for (std::size_t i = 0; i < slots + 10; ++i) TRACE(3, "{}", i);
  EXPECT_EQ(capture.lines().size(), slots + 10);
  auto const lines = Kiln::traceRingLines();
  ASSERT_EQ(lines.size(), slots);
  EXPECT_EQ(lines.front(), "TestBody: 10");
  EXPECT_EQ(lines.back(), "TestBody: " + std::to_string(slots + 9));
  EXPECT_THAT(Kiln::traceRingLines(2),
              ElementsAre("TestBody: " + std::to_string(slots + 8), "TestBody: " + std::to_string(slots + 9)));
}

TEST_F(TraceTest, aTextFunctionMayTrace) {
  Kiln::TraceCapture capture("TraceTest");
  TRACE(1, "value {}", World::Talkative{4});
  EXPECT_THAT(capture.lines(), ElementsAre("appendText: asked", "TestBody: value 4"));
}

TEST_F(TraceTest, aBadWidthIsShownNotThrown) {
  Kiln::TraceCapture capture("TraceTest");
  TRACE(1, "{:{}}", 1, -2);
  EXPECT_THAT(only(capture), testing::HasSubstr("{:{}} ("));
}

TEST_F(TraceTest, masksComeFromAList) {
  auto const mask = [] { return kilnTraceHandle.mask(); };
  EXPECT_EQ(Kiln::traceMasksIs("TraceTest=0x3,TraceTestElse*=2"), "");
  EXPECT_EQ(mask(), 3U);
  EXPECT_EQ(Elsewhere::kilnTraceHandle.mask(), 2U);
  EXPECT_EQ(Kiln::traceMasksIs("*=1023,TraceTest=4"), "");
  EXPECT_EQ(mask(), 4U);
  EXPECT_EQ(Elsewhere::kilnTraceHandle.mask(), 1023U);

  for (char const* bad : {"TraceTest", "=3", "TraceTest=", "TraceTest=1,,", "TraceTest=-1", "TraceTest=0x",
                          "TraceTest=1024", "TraceTest=1 ", "NoSuchFile=1", "TraceTest=1,Nobody*=1"}) {
    EXPECT_NE(Kiln::traceMasksIs(bad), "") << bad;
    EXPECT_EQ(mask(), 4U) << bad;
  }
  EXPECT_THAT(Kiln::traceMasksIs("NoSuchFile=1"), testing::HasSubstr("\"NoSuchFile\""));
  EXPECT_EQ(Kiln::traceMasksIs(""), "");
  EXPECT_EQ(mask(), 0U);
}

TEST_F(TraceTest, aFileThatIsLoadedLaterIsSetAndLeavesNothingBehind) {
  Kiln::traceRingClear();
  ASSERT_EQ(Kiln::traceMasksIs("*=2"), "");
  auto const loaded = [] { return std::string_view(Kiln::traceHandles()->name()) == "PlugIn"; };
  {
    Kiln::TraceRegistration const registration(PlugIn::kilnTraceHandle);
    EXPECT_TRUE(loaded());
    PlugIn::traced();
    EXPECT_EQ(Kiln::traceRingLines().size(), 1U);
  }
  EXPECT_FALSE(loaded());
  EXPECT_EQ(Kiln::traceRingLines().size(), 0U);
}

TEST_F(TraceTest, capturesOverlapAndLeaveTheLevelsAsTheyWere) {
  ASSERT_EQ(Kiln::traceMasksIs("TraceTest=1"), "");
  auto outer = std::make_unique<Kiln::TraceCapture>("TraceTest*", 2U);
  Kiln::TraceCapture inner("TraceTest", 4U);
  TRACE(0, "zero");
  TRACE(1, "one");
  TRACE(2, "two");
  Elsewhere::traced();
  EXPECT_THAT(outer->lines(), ElementsAre("TestBody: one", "traced: elsewhere"));
  EXPECT_THAT(inner.lines(), ElementsAre("TestBody: two"));
  EXPECT_TRUE(inner.contains("two"));
  EXPECT_FALSE(inner.contains("one"));
  outer.reset();
  EXPECT_EQ(kilnTraceHandle.mask(), 5U);
}

TEST_F(TraceTest, theTextSinkPrintsAtOnceWithPlaceAndLevel) {
  std::FILE* const file = std::tmpfile();
  ASSERT_TRUE(file);
  Kiln::traceMasksIs("TraceTest=2");
  EXPECT_EQ(Kiln::traceTextSinkIs(file), nullptr);
  unsigned const line = __LINE__ + 1;
  TRACE(1, "hello {}", 5);
  EXPECT_EQ(Kiln::traceTextSinkIs(nullptr), file);
  TRACE(1, "not printed");
  std::array<char, 200> text{};
  std::rewind(file);
  std::size_t const length = std::fread(text.data(), 1, text.size(), file);
  std::fclose(file);
  EXPECT_EQ(std::string(text.data(), length),
            "tests/kiln/trace_test.cpp:" + std::to_string(line) + " 1 TestBody: hello 5\n");
}

}  // namespace
