#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/import/Choices.h"
#include "host/scenario/Expectation.h"
#include "platform/asic/EntryHandle.h"
#include "platform/document/Document.h"

namespace Host {

/// Writes that the chip refuses from a step on.
struct Refusal {
  enum class By : std::uint8_t { table, key, write } by = By::table;
  std::string text;         ///< The chip table's name, or the key's text.
  std::uint64_t write = 0;  ///< The number of the write from now on, 1 being the next.
  Asic::EntryState with = Asic::EntryState::failed;
};

/// One step: what happens, in the order of the members, and what must hold afterwards.
struct ScenarioStep {
  std::string name;
  bool heal = false;
  std::vector<Refusal> refuse;
  std::vector<std::pair<std::string, bool>> space;  ///< Tables that lose their space, or have it again.
  /// The whole state from this step on; nothing where the step does not change it.
  std::optional<Stateway::StateDocument> state;
  bool restart = false;
  std::vector<Expectation> expect;
};

/// A story that an agent is told: a state, and steps that change it, with what is expected of them.
///
///   {"scenario": "An uplink flaps", "profile": "flat", "completion": "deferred",
///    "state": {"stateway": …} or "leaf.json" or "capture-directory",
///    "steps": [{"name": "uplink down", "patch": {…}, "expect": {"/tunnels/programmed": true}},
///              {"refuse": [{"table": "VirtualPort1Table", "with": "full"}]}, {"heal": true}, {"restart": true},
///              {"space": {"VxlanV4UnderlayMcastTable": false}}]}
///
/// "patch" is a merge patch on the state document, "state" replaces it. Files are named from the scenario's directory.
struct Scenario {
  std::string name;
  std::optional<std::string> profile;
  std::optional<std::string> completion;
  /// The first one brings the state in which the story begins.
  std::vector<ScenarioStep> steps;

  /// Whether a document is a scenario and not a state.
  static bool isOne(Stateway::StateDocument const& document) { return bool(document.root().find("steps")); }
  /// Throws `InputError`, with file, place and value, for the first thing that is not as above. `choices`
  /// are about captures.
  static Scenario read(Stateway::StateDocument const& document, Choices& choices);
};

/// Applies a merge patch: members of objects are replaced, added, or removed by null.
void mergePatch(rapidjson::Value& target, rapidjson::Value const& patch, rapidjson::Document::AllocatorType& allocator);

}  // namespace Host
