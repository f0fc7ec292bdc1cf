#include "platform/kiln/Toggle.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/istreamwrapper.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <utility>

namespace {

std::map<std::string, bool, std::less<>>& overrides() {
  static auto& instance = *new std::map<std::string, bool, std::less<>>;
  return instance;
}

bool complain(std::string const& path, char const* what, char const* toggleName, bool byDefault) {
  std::fprintf(stderr, "%s: %s; %s stays %s\n", path.c_str(), what, toggleName, byDefault ? "true" : "false");
  return byDefault;
}

bool readToggle(std::string const& path, char const* toggleName, bool byDefault) {
  std::ifstream file(path);
  if (!file) return byDefault;
  rapidjson::IStreamWrapper stream(file);
  rapidjson::Document document;
  document.ParseStream(stream);
  if (document.HasParseError()) {
    return complain(path, rapidjson::GetParseError_En(document.GetParseError()), toggleName, byDefault);
  }
  if (!document.IsObject()) return complain(path, "not an object of switches", toggleName, byDefault);
  auto const member = std::as_const(document).FindMember(toggleName);
  if (member == std::as_const(document).MemberEnd()) return byDefault;
  if (!member->value.IsBool()) return complain(path, "a switch is true or false", toggleName, byDefault);
  return member->value.GetBool();
}

}  // namespace

bool getToggleState(char const* fileName, char const* toggleName, bool byDefault) {
  auto const found = overrides().find(std::string_view(toggleName));
  if (found != overrides().end()) return found->second;
  char const* const directory = std::getenv("TESSEL_TOGGLE_DIR");
  if (!directory || !*directory) return byDefault;
  return readToggle(std::string(directory) + "/" + fileName, toggleName, byDefault);
}

void Kiln::toggleOverrideIs(std::string_view toggleName, std::optional<bool> state) {
  if (state) {
    overrides().insert_or_assign(std::string(toggleName), *state);
  } else if (auto const found = overrides().find(toggleName); found != overrides().end()) {
    overrides().erase(found);
  }
}
