#include "host/commands/Shower.h"

#include <algorithm>
#include <ostream>

#include "host/notes/Notes.h"
#include "host/show/JsonReport.h"
#include "host/show/TextReport.h"

namespace Host {

Shower::Shower(RunOptions const& options, Agent const& agent, WarningLog const& warnings, std::ostream& out, bool steps)
    : options_(options),
      agent_(agent),
      warnings_(warnings),
      out_(out),
      json_(out, JsonWriter::Layout::indented),
      steps_(steps || options.showEach) {
  if (!options_.json()) return;
  json_.object();
  if (steps_) json_.key("steps").array();
}

void Shower::step(std::string const& name) {
  if (!steps_) return;
  step(
      name, [&](JsonWriter& json) { json.key("input").text(std::string_view(name)); }, "");
}

void Shower::step(std::string const& name, Kiln::FunctionRef<void(JsonWriter&)> json, std::string const& text) {
  if (options_.json()) {
    json_.object();
    json(json_);
    if (options_.showEach) show();
    json_.objectEnd();
    return;
  }
  if (options_.quiet) return;
  out_ << "== " << name << '\n' << text << '\n';
  if (!options_.showEach) return;
  show();
  out_ << '\n';
}

bool Shower::end() {
  if (options_.json() && steps_) json_.arrayEnd();
  // Other programs find the last state in the same place, with steps and without.
  if (!options_.showEach || options_.json()) show();
  if (options_.json()) {
    writeWarnings(json_, warnings_.all());
    json_.objectEnd();
    out_ << '\n';
  }
  return good_;
}

void Shower::show() {
  auto report = reportOf(agent_);
  options_.filter.apply(report);
  good_ = agent_.settled() && report.isAsWanted();
  auto const& sections = options_.show;
  if (options_.json()) {
    bool const withState = std::find(sections.begin(), sections.end(), "state") != sections.end();
    return writeReport(json_, agent_, report, withState);
  }
  if (options_.quiet) return;
  for (auto const& section : sections) {
    if (&section != &sections.front()) out_ << '\n';
    printSection(out_, section, agent_, report);
  }
}

}  // namespace Host
