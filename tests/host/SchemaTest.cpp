#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include "tests/host/CommandWorld.h"

namespace Host::Test {

/// The schema of what calls itself "tessel-NAME/VERSION".
rapidjson::SchemaDocument schemaOf(std::string const& format) {
  auto const name = format.substr(format.find('-') + 1, format.find('/') - format.find('-') - 1);
  std::ifstream in(TESSEL_SOURCE_DIR "/docs/schemas/" + name + ".schema.json");
  std::string const text(std::istreambuf_iterator<char>(in), {});
  rapidjson::Document schema;
  EXPECT_FALSE(schema.Parse(text.c_str()).HasParseError()) << name;
  EXPECT_NE(text.find(format), text.npos) << name << " is of another version";
  return rapidjson::SchemaDocument(schema);
}

/// "" for a document that is as its schema has it, else the place and the rule that it breaks.
std::string violation(rapidjson::Document const& document) {
  auto const format = document.FindMember("format");
  if (format == document.MemberEnd()) return "has no format";
  auto const schema = schemaOf(format->value.GetString());
  rapidjson::SchemaValidator validator(schema);
  if (document.Accept(validator)) return "";
  rapidjson::StringBuffer place;
  validator.GetInvalidDocumentPointer().StringifyUriFragment(place);
  return std::string(place.GetString()) + ": " + validator.GetInvalidSchemaKeyword();
}

TEST(Schemas, describeWhatCommandsPrint) {
  for (auto const& [given, result] : cases("input/schemas.txt")) {
    for (auto const& line : given) {
      auto arguments = argumentsOf(line);
      auto const ran = run(arguments);
      EXPECT_NE(ran.code, kUnusable) << line << '\n' << ran.err;
      EXPECT_EQ("= " + violation(ran.json()) + '\n', result) << line;
    }
  }
}

// What rules out nothing describes nothing.
TEST(Schemas, refuseWhatNoCommandPrints) {
  auto report = run({"run", "--format", "json"}).json();
  auto& allocator = report.GetAllocator();
  report["tunnels"][0].AddMember("surprise", 1, allocator);
  EXPECT_EQ(violation(report), "#/tunnels/0/surprise: additionalProperties");
  report["tunnels"][0].RemoveMember("surprise");
  report["tunnels"][0].RemoveMember("reason");
  EXPECT_EQ(violation(report), "#/tunnels/0: required");
  report["tunnels"][0].AddMember("reason", 7, allocator);
  EXPECT_EQ(violation(report), "#/tunnels/0/reason: anyOf");
}

}  // namespace Host::Test
