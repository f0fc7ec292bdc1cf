#include "platform/kiln/Toggle.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "platform/kiln/JsonIn.h"

namespace {

std::map<std::string, bool, std::less<>>& overrides() {
  static auto& instance = *new std::map<std::string, bool, std::less<>>;
  return instance;
}

/// The directory of the toggle files; empty if there is none.
std::string toggleDirectory() {
  char const* const directory = std::getenv("TESSEL_TOGGLE_DIR");
  return directory ? directory : "";
}

bool readToggle(std::string const& path, char const* toggleName, bool byDefault) {
  if (std::error_code error; !std::filesystem::exists(path, error)) return byDefault;
  try {
    auto const document = Kiln::JsonDocument::read(path);
    auto const toggle = document.root().find(toggleName);
    return toggle ? toggle->boolean() : byDefault;
  } catch (Kiln::InputError const& error) {
    std::fprintf(stderr, "%s; %s keeps its default, %s\n", error.what(), toggleName, byDefault ? "true" : "false");
    return byDefault;
  }
}

}  // namespace

bool getToggleState(char const* fileName, char const* toggleName, bool byDefault) {
  auto const found = overrides().find(std::string_view(toggleName));
  if (found != overrides().end()) return found->second;
  auto const directory = toggleDirectory();
  return directory.empty() ? byDefault : readToggle(directory + "/" + fileName, toggleName, byDefault);
}

void Kiln::togglesCheck() {
  auto const directory = toggleDirectory();
  if (directory.empty()) return;
  std::error_code error;
  for (std::filesystem::directory_iterator at(directory, error), end; !error && at != end; at.increment(error)) {
    if (at->path().extension() != ".json") continue;
    auto const document = JsonDocument::read(at->path().string());
    document.root().eachMember([](std::string_view, JsonIn const& toggle) { toggle.boolean(); });
  }
  if (error) throw InputError("TESSEL_TOGGLE_DIR", "", directory, "expected a directory: " + error.message());
}

void Kiln::toggleOverrideIs(std::string_view toggleName, std::optional<bool> state) {
  if (state) {
    overrides().insert_or_assign(std::string(toggleName), *state);
  } else if (auto const found = overrides().find(toggleName); found != overrides().end()) {
    overrides().erase(found);
  }
}
