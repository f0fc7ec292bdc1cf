#include "host/scenario/Scenario.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "host/agent/Inputs.h"

namespace Host {

namespace {

using Kiln::JsonDocument;
using Kiln::JsonIn;
using Stateway::StateDocument;

/// Reads the steps of one file, each on top of the state that the steps before it lead to.
class Reader {
 public:
  Reader(StateDocument const& document, Choices& choices) : document_(document), choices_(choices) {
    state_.SetObject();
  }

  Scenario read() {
    auto const root = document_.root();
    root.eachMember([](std::string_view name, JsonIn const& value) {
      static constexpr std::string_view known[] = {"scenario", "profile", "completion", "state", "steps"};
      if (std::find(std::begin(known), std::end(known), name) == std::end(known))
        value.fail("unknown member, expected one of scenario profile completion state steps");
    });
    Scenario scenario;
    if (auto const name = root.find("scenario")) scenario.name = name->text();
    if (auto const profile = root.find("profile")) scenario.profile = profile->text();
    if (auto const completion = root.find("completion")) scenario.completion = completionOf(*completion);
    ScenarioStep first;
    first.name = scenario.name.empty() ? "begin" : scenario.name;
    if (auto const state = root.find("state")) {
      stateIs(*state);
      first.state = snapshot(first.name);
    }
    scenario.steps.push_back(std::move(first));
    root.member("steps").eachElement([&](JsonIn const& step) {
      scenario.steps.push_back(stepOf(step, fmt::format("step {}", scenario.steps.size())));
    });
    return scenario;
  }

 private:
  static std::string completionOf(JsonIn const& in) {
    auto const text = in.text();
    if (text != "direct" && text != "deferred") in.fail("expected one of direct deferred");
    return std::string(text);
  }

  ScenarioStep stepOf(JsonIn const& in, std::string name) {
    ScenarioStep step;
    step.name = std::move(name);
    if (auto const given = in.find("name")) step.name += fmt::format(": {}", given->text());
    bool changed = false;
    in.eachMember([&](std::string_view member, JsonIn const& value) {
      if (member == "heal") {
        step.heal = value.boolean();
      } else if (member == "refuse") {
        value.eachElement([&](JsonIn const& refusal) { step.refuse.push_back(refusalOf(refusal)); });
      } else if (member == "space") {
        value.eachMember(
            [&](std::string_view table, JsonIn const& has) { step.space.emplace_back(table, has.boolean()); });
      } else if (member == "state") {
        stateIs(value);
        changed = true;
      } else if (member == "patch") {
        if (!value.isObject()) value.fail("expected an object");
        mergePatch(state_, value.value(), state_.GetAllocator());
        changed = true;
      } else if (member == "restart") {
        step.restart = value.boolean();
      } else if (member == "expect") {
        value.eachMember(
            [&](std::string_view path, JsonIn const& wanted) { step.expect.emplace_back(std::string(path), wanted); });
      } else if (member != "name") {
        value.fail("unknown member, expected one of name heal refuse space state patch restart expect");
      }
    });
    if (changed) step.state = snapshot(step.name);
    return step;
  }

  static Refusal refusalOf(JsonIn const& in) {
    Refusal refusal;
    bool what = false;
    in.eachMember([&](std::string_view member, JsonIn const& value) {
      if (member == "with") {
        auto const with = value.text();
        if (with != "failed" && with != "full") value.fail("expected one of failed full");
        refusal.with = with == "full" ? Asic::EntryState::full : Asic::EntryState::failed;
        return;
      }
      if (what || (member != "table" && member != "key" && member != "write"))
        value.fail("expected one of table key write, and with");
      what = true;
      refusal.by = member == "table" ? Refusal::By::table : member == "key" ? Refusal::By::key : Refusal::By::write;
      if (refusal.by == Refusal::By::write) {
        refusal.write = value.unsignedNumber(1, UINT64_MAX);
      } else {
        refusal.text = value.text();
      }
    });
    if (!what) in.fail("expected one of table key write, and with");
    return refusal;
  }

  void stateIs(JsonIn const& in) {
    if (in.isObject()) {
      state_.CopyFrom(in.value(), state_.GetAllocator());
      return;
    }
    auto const path = std::filesystem::path(document_.source()).parent_path() / std::string(in.text());
    auto const inputs = readInputs({path.string()}, choices_);
    state_.CopyFrom(inputs.front().root().value(), state_.GetAllocator());
  }

  StateDocument snapshot(std::string const& step) const {
    rapidjson::Document copy;
    copy.CopyFrom(state_, copy.GetAllocator());
    return StateDocument(JsonDocument(std::move(copy), fmt::format("{}, {}", document_.source(), step)));
  }

  StateDocument const& document_;
  Choices& choices_;
  rapidjson::Document state_;
};

}  // namespace

Scenario Scenario::read(StateDocument const& document, Choices& choices) { return Reader(document, choices).read(); }

void mergePatch(rapidjson::Value& target, rapidjson::Value const& patch,
                rapidjson::Document::AllocatorType& allocator) {
  if (!patch.IsObject()) {
    target.CopyFrom(patch, allocator);
    return;
  }
  if (!target.IsObject()) target.SetObject();
  for (auto const& member : patch.GetObject()) {
    if (member.value.IsNull()) {
      target.EraseMember(member.name);
    } else if (target.HasMember(member.name)) {
      mergePatch(target[member.name], member.value, allocator);
    } else {
      rapidjson::Value value;
      mergePatch(value, member.value, allocator);
      target.AddMember(rapidjson::Value(member.name, allocator), value, allocator);
    }
  }
}

}  // namespace Host
