#include <ostream>
#include <utility>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/show/Columns.h"
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

void printProfile(std::ostream& out, Asic::ChipProfile const& profile) {
  out << profile.name() << ": " << profile.description() << '\n';
  if (!profile.profileSupportsVxlan()) out << "has no room for VXLAN\n";
  out << '\n';
  printTables(out, profile);
  out << '\n';
  printFeatures(out, profile);
}

}  // namespace

int profilesCommand(std::string const& nameOrFile, std::ostream& out) {
  if (!nameOrFile.empty()) {
    printProfile(out, *Asic::loadProfile(nameOrFile));
    return kGood;
  }
  Columns columns({Align::left, Align::left});
  columns.row({"PROFILE", "DESCRIPTION"});
  for (auto const name : Asic::profileNames()) {
    columns.row({std::string(name), Asic::loadProfile(std::string(name))->description()});
  }
  columns.print(out);
  return kGood;
}

}  // namespace Host
