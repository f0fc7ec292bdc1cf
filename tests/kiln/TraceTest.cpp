#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TraceTest");

// A second file of the same name, as far as the registry can tell.
namespace Elsewhere {
KILN_TRACE_FILE("TraceTestElsewhere");
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

/// Fits a slot as a value, with padding or not; and one that owns memory.
template <std::size_t size>
struct Row {
  std::array<unsigned, size> fields{};
};
template <std::size_t size>
void appendText(std::string& text, Row<size> const& row) {
  text += "row " + std::to_string(row.fields.back());
}

struct Owner {
  std::shared_ptr<std::string> name;
};
void appendText(std::string& text, Owner const& owner) {
  TRACE(2, "asked");
  text += *owner.name;
}

}  // namespace World

using testing::ElementsAre;
using testing::HasSubstr;

std::string only(Kiln::TraceCapture& capture) {
  std::string const line = capture.lines().size() == 1 ? capture.lines()[0] : "not one line";
  capture.clear();
  return line;
}

class TraceTest : public testing::Test {
 protected:
  ~TraceTest() override { Kiln::traceMasksIs(""); }
};

TEST_F(TraceTest, offEvaluatesNothingAndCostsNoSlotAndOnReturns) {
  Kiln::traceRingClear();
  int evaluated = 0;
  auto const handler = [&](bool missing) {
    if (missing) return TRACE_IN("handler", 1, " tnlIdMap not found {}", ++evaluated);
    TRACE_IN("handler", 0, "found {}", ++evaluated);
  };
  handler(true);
  {
    Kiln::TraceCapture capture("TraceTest", 1U << 1);
    for (bool const missing : {false, true}) handler(missing);
    EXPECT_EQ(only(capture), "handler:  tnlIdMap not found 1");
  }
  handler(true);
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(Kiln::traceRingLines().size(), 1U);
}

TEST_F(TraceTest, readsBackEveryKindOfArgumentAsItWas) {
  Kiln::TraceCapture capture("TraceTest", ~4U), other("TraceTest", 4U);
  World::Row<5> small;
  World::Row<40> large;
  small.fields[4] = 7;
  large.fields[39] = 5;
  TRACE(1, "vtep {} from {:>9}|{}|{}", small, small, large, World::Owner{std::make_shared<std::string>("owned")});
  EXPECT_EQ(only(capture), "TestBody: vtep row 7 from     row 7|row 5|owned");
  TRACE(9, "{} {:#x} {} {} {} {}", std::uint8_t{200}, 0xfffffffeU, -3LL, true, 'c', World::Family::ipv6);
  EXPECT_EQ(only(capture), "TestBody: 200 0xfffffffe -3 true c 2");
  TRACE(9, "{} {:.2f} {} {{}}", 0.1F, 2.5, static_cast<void*>(nullptr));
  EXPECT_EQ(only(capture), "TestBody: 0.1 2.50 0x0 {}");
  std::string text = "two";
  char const* const none = nullptr;
  TRACE(9, "{} {} {} {}", "one", text, std::string_view("three"), none);
  text = "after!";
  EXPECT_EQ(only(capture), "TestBody: one two three (null)");
  EXPECT_THAT(Kiln::traceRingLines(1), ElementsAre("TestBody: one two three (null)"));
  TRACE(1, "{:{}}", 1, -2);
  EXPECT_THAT(only(capture), HasSubstr("{:{}} (")) << "a bad width is shown, not thrown";
  EXPECT_THAT(other.lines(), ElementsAre("appendText: asked"));
}

TEST_F(TraceTest, aLongTextIsCutAndStarvesNoOther) {
  Kiln::TraceCapture capture("TraceTest");
  std::string const huge(100'000, 'x');
  TRACE(1, "{}|{}|{}|{}", huge, huge, 42, World::Row<5>());
  std::string const line = only(capture);
  EXPECT_THAT(line, testing::EndsWith("x...|42|row 0"));
  EXPECT_LT(line.size(), sizeof(Kiln::Impl::TraceSlot));
  EXPECT_THAT(line, HasSubstr("xxxxxxxxxx...|xxxxxxxxxx")) << "both have at least their own room";

  std::string const fits(sizeof(Kiln::Impl::TraceSlot::payload) - 1, 'y');
  TRACE(1, "{}", fits);
  EXPECT_EQ(only(capture), "TestBody: " + fits);
  TRACE(1, "{}", fits + 'y');
  EXPECT_EQ(only(capture), "TestBody: " + fits.substr(3) + "...");
}

TEST_F(TraceTest, theRingKeepsTheNewestAndATextFunctionMayTrace) {
  Kiln::TraceCapture capture("TraceTest");
  constexpr std::size_t slots = Kiln::Impl::TraceRing::slots;
  for (std::size_t i = 0; i < slots + 10; ++i) TRACE(3, "{}", i);
  EXPECT_EQ(capture.lines().size(), slots + 10);
  auto const lines = Kiln::traceRingLines();
  ASSERT_EQ(lines.size(), slots);
  EXPECT_EQ(lines.front(), "TestBody: 10");
  EXPECT_THAT(Kiln::traceRingLines(2),
              ElementsAre("TestBody: " + std::to_string(slots + 8), "TestBody: " + std::to_string(slots + 9)));
  capture.clear();
  TRACE(1, "value {}", World::Owner{std::make_shared<std::string>("4")});
  EXPECT_THAT(capture.lines(), ElementsAre("appendText: asked", "TestBody: value 4"));
}

TEST_F(TraceTest, masksComeFromAList) {
  auto const masks = [] {
    return std::to_string(kilnTraceHandle.mask()) + " " + std::to_string(Elsewhere::kilnTraceHandle.mask());
  };
  EXPECT_EQ(Kiln::traceMasksIs("TraceTest=0x3f,TraceTestElse*=2"), "");
  EXPECT_EQ(masks(), "63 2");
  EXPECT_EQ(Kiln::traceMasksIs("*=1023,TraceTest=4"), "");
  for (char const* bad : {"TraceTest", "=3", "TraceTest=", "TraceTest=1,,", "TraceTest=-1", "TraceTest=0x",
                          "TraceTest=1024", "TraceTest=1 ", "NoSuchFile=1", "TraceTest=1,Nobody*=1"}) {
    EXPECT_NE(Kiln::traceMasksIs(bad), "") << bad;
    EXPECT_EQ(masks(), "4 1023") << bad;
  }
  EXPECT_THAT(Kiln::traceMasksIs("NoSuchFile=1"), HasSubstr("\"NoSuchFile\""));
  EXPECT_EQ(Kiln::traceMasksIs(""), "");
  EXPECT_EQ(masks(), "0 0");
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

TEST_F(TraceTest, theTextSinkPrintsAtOnceWithPlaceAndLevel) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const file = open_memstream(&text, &size);
  Kiln::traceMasksIs("TraceTest=2");
  EXPECT_EQ(Kiln::traceTextSinkIs(file), nullptr);
  TRACE(1, "hello {}", 5);
  EXPECT_EQ(Kiln::traceTextSinkIs(nullptr), file);
  TRACE(1, "not printed");
  std::fclose(file);
  EXPECT_THAT(text, testing::MatchesRegex("tests/kiln/TraceTest.cpp:[0-9]+ 1 TestBody: hello 5\n"));
  std::free(text);
}

}  // namespace
