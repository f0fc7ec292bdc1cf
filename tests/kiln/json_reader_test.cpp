#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/kiln/JsonIn.h"

namespace Kiln {
namespace {

/// What is wrong with a text; "" if nothing.
std::string refusal(std::string_view text, JsonDocument::Limits const& limits = {}) {
  try {
    JsonDocument::parse(text, "f.json", limits);
  } catch (InputError const& error) {
    EXPECT_EQ(error.what(), error.file() + ": " + error.place() + ": found " + error.value() + ", " + error.problem());
    return std::string(error.what()).substr(sizeof "f.json: " - 1);
  }
  return "";
}

std::string repeated(std::string const& part, std::size_t times) {
  std::string text;
  while (times-- != 0) text += part;
  return text;
}

TEST(JsonReader, whatIsNoJsonIsRefusedWithLineColumnAndWhatWasFound) {
  using namespace std::string_literals;
  struct Case {
    std::string text, said;
  };
  for (auto const& [text, said] : {
           Case{"[", "line 1, column 2: found the end of the text, expected a JSON value"},
           Case{"", "line 1, column 1: found the end of the text, expected a JSON value"},
           Case{"[{},\n {\"mac\" 1}]", "line 2, column 9: found '1', expected ':' after the name"},
           Case{"[{}]\n]", "line 2, column 1: found ']', expected nothing after the first value"},
           Case{"{}\0{}"s, "line 1, column 3: found the byte 0x00, expected nothing after the first value"},
           Case{"[\"\xff\"]", "line 1, column 3: found the byte 0xff, expected UTF-8 text"},
           Case{"[\"\\u12\"]", "line 1, column 3: found '\\', expected four hexadecimal digits after \\u"},
           Case{"[1e999]", "line 1, column 2: found '1', expected a number that fits 64 bits"},
       }) {
    EXPECT_EQ(refusal(text), said) << text;
  }
  EXPECT_EQ(refusal("\xef\xbb\xbf{}"), "") << "a byte order mark";
}

TEST(JsonReader, limitsHoldForEveryKindOfNesting) {
  EXPECT_EQ(refusal(repeated("[", 64) + repeated("]", 64)), "");
  std::string const said = "found one more level of nesting, expected at most 64 levels";
  EXPECT_EQ(refusal(repeated("[", 1'000'000)), "line 1, column 65: " + said);
  EXPECT_EQ(refusal(repeated("{\"a\":", 1'000'000)), "line 1, column 321: " + said);
  JsonDocument::Limits const four{.depth = 4, .values = 4, .bytes = 0};
  EXPECT_EQ(refusal("[0,{\"a\":1}]", four), "");
  EXPECT_EQ(refusal("[0,{\"a\":1},[]]", four), "line 1, column 12: found one more value, expected at most 4 values");
}

TEST(JsonReader, aNameThatIsThereTwiceIsRefusedWhereverItIs) {
  EXPECT_EQ(refusal(R"({"stateway":{"a":{}},"local":{},"stateway":{"b":{}}})"),
            R"(/stateway: found {"b":{}}, expected one member of this name)");
  EXPECT_EQ(refusal(R"([{"a/~\n":{"b":1,"c":2,"\u0062":3}}])"),
            R"(/0/a~1~0\u000a/b: found 3, expected one member of this name)");
  EXPECT_EQ(refusal(R"([{"a":1},{"a":1,"A":1}])"), "");
}

TEST(JsonReader, filesThatCannotBeReadAreNamed) {
  auto const base = std::filesystem::temp_directory_path() / ("json-reader-" + std::to_string(getpid()));
  std::filesystem::create_directories(base);
  auto const read = [&](std::filesystem::path const& file) -> std::string {
    try {
      JsonDocument::read(file, {.bytes = 1'000'000});
    } catch (InputError const& error) {
      EXPECT_EQ(error.file(), file.string());
      return error.what() + file.string().size();
    }
    return "";
  };
  EXPECT_EQ(read(base), ": found nothing that can be read (Is a directory), expected a JSON file");
  EXPECT_EQ(read(base / "none.json"),
            ": found nothing that can be read (No such file or directory), expected a JSON file");
  EXPECT_EQ(read("/dev/zero"), ": found a longer file, expected at most 1000000 bytes");
  std::ofstream(base / "good.json") << "[1]";
  EXPECT_EQ(read(base / "good.json"), "");
  std::filesystem::remove_all(base);
}

TEST(JsonReader, placesAreJsonPointersAndLongValuesAreCutBetweenCharacters) {
  auto const document = JsonDocument::parse(R"({"stateway":{"vxlan/~config":{"x":"0123456789"}}})", "");
  auto const config = document.root().member("stateway").member("vxlan/~config");
  EXPECT_EQ(config.member("x").path(), "/stateway/vxlan~1~0config/x");
  EXPECT_FALSE(config.find("y"));
  EXPECT_THROW(config.member("y"), InputError);

  auto const longText = JsonDocument::parse("\"" + repeated("é", 100) + "\"", "");
  auto const shown = longText.root().shown();
  EXPECT_EQ(shown.size(), 79U + 3);
  EXPECT_TRUE(shown.ends_with("é..."));
}

}  // namespace
}  // namespace Kiln
