#include "platform/asic/ProfileLoader.h"

#include <filesystem>

#include "platform/asic/TableRegistry.h"
#include "platform/kiln/Json.h"

namespace Asic {

namespace {

struct Embedded {
  std::string_view name;
  std::string_view json;
};
constexpr Embedded embedded[] = {
#include "EmbeddedProfiles.inc"
};

constexpr std::uint32_t kMaxRows = 1U << 20;

TableSize readSize(Kiln::JsonIn const& in) {
  TableSize size;
  in.eachMember([&](std::string_view name, Kiln::JsonIn const& value) {
    if (name == "rows") {
      size.rows = static_cast<std::uint32_t>(value.unsignedNumber(0, kMaxRows));
    } else if (name == "base") {
      size.base = static_cast<std::uint32_t>(value.unsignedNumber(0, kMaxRows));
    } else {
      value.fail("unknown member, expected one of rows base");
    }
  });
  return size;
}

void readTables(ChipProfile& profile, Kiln::JsonIn const& in) {
  in.eachMember([&](std::string_view name, Kiln::JsonIn const& value) {
    auto const* known = tableClass(name);
    if (!known) value.fail("unknown table");
    if (!known->parts().empty()) {
      std::string names;
      for (auto const part : known->parts()) names.append(" ").append(part);
      value.fail("a merged table is as large as its parts, name those:" + names);
    }
    profile.tableIs(name, readSize(value));
  });
}

bool isFeature(Kiln::Type const& type) {
  return type.isA(Feature::kilnType()) && type.constructible() && &type != &Feature::kilnType();
}

Dovel::Ptr<Feature> makeFeature(Kiln::Type const& type) {
  return Dovel::cast<Feature>(type.make(std::string(type.name())));
}

void readFeatures(ChipProfile& profile, Kiln::JsonIn const& in) {
  in.eachMember([&](std::string_view name, Kiln::JsonIn const& value) {
    auto const* type = Kiln::typeByName(name);
    if (!type || !isFeature(*type)) value.fail("unknown feature");
    Kiln::entityCheck(*type, value);
    auto const feature = makeFeature(*type);
    Kiln::entityFromJson(*feature, value);
    profile.featureIs(feature);
  });
}

Dovel::Ptr<ChipProfile> readProfile(Kiln::JsonIn const& in) {
  auto const name = in.member("name");
  auto const profile = Dovel::make<ChipProfile>(std::string(name.text()));
  for (auto const* type : Kiln::types()) {
    if (isFeature(*type)) profile->featureIs(makeFeature(*type));
  }
  in.eachMember([&](std::string_view member, Kiln::JsonIn const& value) {
    if (member == "name") return;
    if (member == "description") return profile->descriptionIs(std::string(value.text()));
    if (member == "supportsVxlan") return profile->profileSupportsVxlanIs(value.boolean());
    if (member == "testChip") return profile->isTestChipIs(value.boolean());
    if (member == "tables") return readTables(*profile, value);
    if (member == "features") return readFeatures(*profile, value);
    value.fail("unknown member, expected one of name description supportsVxlan testChip tables features");
  });
  return profile;
}

/// Throws `InputError` for the first feature whose values cannot go together.
void checkFeatures(ChipProfile const& profile, Kiln::JsonIn const& in) {
  for (auto const& [name, feature] : profile.features()) {
    auto const fault = feature->fault();
    if (fault.empty()) continue;
    auto const all = in.find("features");
    if (auto const own = all ? all->find(name) : std::nullopt) own->fail(fault);
    throw Kiln::InputError(in.source(), "/features/" + std::string(name), "", fault);
  }
}

Dovel::Ptr<ChipProfile const> profileOf(Kiln::JsonDocument const& document) {
  auto const profile = readProfile(document.root());
  checkFeatures(*profile, document.root());
  return profile;
}

}  // namespace

Dovel::Ptr<ChipProfile const> parseProfile(std::string_view json, std::string const& file) {
  return profileOf(Kiln::JsonDocument::parse(json, file));
}

Dovel::Ptr<ChipProfile const> loadProfile(std::string const& nameOrFile) {
  for (auto const& profile : embedded) {
    if (profile.name == nameOrFile) return parseProfile(profile.json, "profiles/" + nameOrFile + ".json");
  }
  if (std::error_code error; std::filesystem::exists(nameOrFile, error)) {
    return profileOf(Kiln::JsonDocument::read(nameOrFile));
  }
  std::string names;
  for (auto const name : profileNames()) names.append(" ").append(name);
  throw Kiln::InputError(nameOrFile, "", "", "neither a file nor one of the built-in profiles" + names);
}

std::vector<std::string_view> profileNames() {
  std::vector<std::string_view> names;
  for (auto const& profile : embedded) names.push_back(profile.name);
  return names;
}

}  // namespace Asic
