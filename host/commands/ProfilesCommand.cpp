#include <ostream>
#include <utility>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/show/Columns.h"
#include "host/show/JsonReport.h"
#include "platform/asic/ProfileLoader.h"
#include "platform/kiln/Json.h"

namespace Host {

namespace {

using Align = Columns::Align;

void printTables(std::ostream& out, Asic::ChipProfile const& profile) {
  Columns columns({Align::left, Align::right, Align::right});
  columns.row({"TABLE", "ROWS", "FROM"});
  for (auto const& [name, size] : profile.tables()) {
    if (size.rows != 0) columns.row({name, Kiln::toText(size.rows), Kiln::toText(size.base)});
  }
  columns.print(out);
}

/// All features but those that only say that a table is present.
void printFeatures(std::ostream& out, Asic::ChipProfile const& profile) {
  for (auto const& [name, feature] : profile.features()) {
    if (name.ends_with("::Util")) continue;
    out << name << '\n';
    for (auto const* attribute : feature->typeData().attributes()) {
      out << "  " << attribute->name << '='
          << Kiln::jsonText([&object = *feature, attribute](Kiln::JsonOut place) { attribute->toJson(object, place); })
          << '\n';
    }
  }
}

void writeProfile(JsonWriter& json, Asic::ChipProfile const& profile) {
  json.object();
  json.key("name").text(std::string_view(profile.name()));
  json.key("description").text(std::string_view(profile.description()));
  json.key("supportsVxlan").boolean(profile.profileSupportsVxlan());
  json.key("tables").object();
  for (auto const& [name, size] : profile.tables()) {
    if (size.rows == 0) continue;
    json.key(name).object();
    json.key("rows").number(std::uint64_t{size.rows});
    json.key("from").number(std::uint64_t{size.base});
    json.objectEnd();
  }
  json.objectEnd();
  json.objectEnd();
}

/// The built-in profiles, or the named one.
std::vector<Dovel::Ptr<Asic::ChipProfile const>> profilesOf(std::string const& nameOrFile) {
  std::vector<Dovel::Ptr<Asic::ChipProfile const>> profiles;
  if (!nameOrFile.empty()) return {Asic::loadProfile(nameOrFile)};
  for (auto const name : Asic::profileNames()) profiles.push_back(Asic::loadProfile(std::string(name)));
  return profiles;
}

void printProfile(std::ostream& out, Asic::ChipProfile const& profile) {
  out << profile.name() << ": " << profile.description() << '\n';
  if (!profile.profileSupportsVxlan()) out << "has no room for VXLAN\n";
  out << '\n';
  printTables(out, profile);
  out << '\n';
  printFeatures(out, profile);
}

}  // namespace

int profilesCommand(std::string const& nameOrFile, bool json, std::ostream& out) {
  auto const profiles = profilesOf(nameOrFile);
  if (json) {
    writeObject(out, [&](JsonWriter& writer) {
      writer.key("format").text(std::string_view("tessel-profiles/1"));
      writer.key("profiles").array();
      for (auto const& profile : profiles) writeProfile(writer, *profile);
      writer.arrayEnd();
    });
    return kGood;
  }
  if (!nameOrFile.empty()) {
    printProfile(out, *profiles.front());
    return kGood;
  }
  Columns columns({Align::left, Align::left});
  columns.row({"PROFILE", "DESCRIPTION"});
  for (auto const& profile : profiles) columns.row({profile->name(), profile->description()});
  columns.print(out);
  return kGood;
}

}  // namespace Host
