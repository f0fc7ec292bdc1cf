#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/kiln/JsonIn.h"
#include "tests/support/Cases.h"

namespace Kiln {
namespace {

/// What is wrong with what `read` reads; "" if nothing.
template <class Read>
std::string refusalOf(Read read) {
  try {
    read();
  } catch (InputError const& error) {
    EXPECT_THAT(error.what(), testing::EndsWith(": found " + error.value() + ", " + error.problem()));
    return std::string(error.what()).substr(error.file().size() + 2);
  }
  return "";
}

std::string refusal(std::string_view text, JsonDocument::Limits const& limits = {}) {
  return refusalOf([&] { JsonDocument::parse(text, "f.json", limits); });
}

std::string repeated(std::string const& part, std::size_t times) {
  std::string text;
  while (times-- != 0) text += part;
  return text;
}

TEST(JsonReader, refusesWithLineColumnAndWhatWasFound) {
  using namespace std::string_literals;
  for (auto const& [given, result] : Support::cases("kiln/broken-json.txt")) {
    std::string text;
    for (auto const& line : given) text += (text.empty() ? "" : "\n") + line;
    EXPECT_EQ("= " + refusal(text) + '\n', result);
  }
  std::string const tooDeep = "found one more level of nesting, expected at most 64 levels";
  for (auto const& [text, said] : std::vector<std::pair<std::string, std::string>>{
           {"", "line 1, column 1: found the end of the text, expected a JSON value"},
           {"{}\0{}"s, "line 1, column 3: found the byte 0x00, expected nothing after the first value"},
           {"[\"\xff\"]", "line 1, column 3: found the byte 0xff, expected UTF-8 text"},
           {repeated("[", 64) + repeated("]", 64), ""},
           {repeated("[", 1'000'000), "line 1, column 65: " + tooDeep},
           {repeated("{\"a\":", 1'000'000), "line 1, column 321: " + tooDeep},
           {R"([{"a":1},{"a":1,"A":1}])", ""},
           {"\xef\xbb\xbf{}", ""},
       }) {
    EXPECT_EQ(refusal(text), said) << text.substr(0, 100);
  }
  JsonDocument::Limits const four{.depth = 4, .values = 4, .bytes = 0};
  EXPECT_EQ(refusal("[0,{\"a\":1}]", four), "");
  EXPECT_EQ(refusal("[0,{\"a\":1},[]]", four), "line 1, column 12: found one more value, expected at most 4 values");
}

TEST(JsonReader, filesThatCannotBeReadAreNamed) {
  auto const base = std::filesystem::temp_directory_path() / ("json-reader-" + std::to_string(getpid()));
  std::filesystem::create_directories(base);
  std::ofstream(base / "good.json") << "[1]";
  for (auto const& [file, said] : std::vector<std::pair<std::filesystem::path, std::string>>{
           {base, "found nothing that can be read (Is a directory), expected a JSON file"},
           {base / "none.json", "found nothing that can be read (No such file or directory), expected a JSON file"},
           {"/dev/zero", "found a longer file, expected at most 3 bytes"},
           {base / "good.json", ""},
       }) {
    EXPECT_EQ(refusalOf([&, &name = file] { JsonDocument::read(name, {.bytes = 3}); }), said);
  }
  std::filesystem::remove_all(base);
}

TEST(JsonReader, placesAreJsonPointersAndLongValuesAreCutBetweenCharacters) {
  auto const document = JsonDocument::parse(R"({"stateway":{"vxlan/~config":{"x":"0123456789"}}})", "");
  auto const config = document.root().member("stateway").member("vxlan/~config");
  EXPECT_EQ(config.member("x").path(), "/stateway/vxlan~1~0config/x");
  EXPECT_FALSE(config.find("y"));
  EXPECT_THROW(config.member("y"), InputError);
  auto const shown = JsonDocument::parse("\"" + repeated("é", 100) + "\"", "").root().shown();
  EXPECT_EQ(shown.size(), 79U + 3);
  EXPECT_THAT(shown, testing::EndsWith("é..."));
}

}  // namespace
}  // namespace Kiln
