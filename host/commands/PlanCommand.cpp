#include <CLI/Error.hpp>
#include <algorithm>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/compare/Fit.h"
#include "host/compare/Operand.h"
#include "host/compare/Snapshot.h"
#include "host/compare/Transition.h"
#include "host/compare/Waiting.h"
#include "host/show/Columns.h"
#include "host/show/Resource.h"

namespace Host {

namespace {

using Kiln::JsonWriter;

struct TablePlan {
  std::string table;
  std::size_t added = 0, removed = 0, changed = 0;
  std::uint32_t freeBefore = 0, freeAfter = 0;
};
struct Plan {
  std::uint64_t writes = 0;
  std::vector<TablePlan> tables;  ///< By name, those that change.
  std::vector<Interruption> interruptions;
  std::vector<Waiting> waiting;  ///< That did not wait before, oldest first.
  bool asWanted = false;
};

std::vector<TablePlan> tablePlans(std::vector<Change> const& changes, std::vector<Resource> const& before,
                                  std::vector<Resource> const& after) {
  std::vector<TablePlan> plans;
  for (std::size_t i = 0; i < after.size(); ++i) {
    TablePlan plan{.table = std::string(after[i].table), .freeBefore = before[i].free, .freeAfter = after[i].free};
    for (auto const& change : changes) {
      if (change.kind != plan.table) continue;
      ++(change.how == Change::How::added     ? plan.added
         : change.how == Change::How::removed ? plan.removed
                                              : plan.changed);
    }
    if (plan.added + plan.removed + plan.changed != 0) plans.push_back(std::move(plan));
  }
  return plans;
}

Plan planOf(Agent& agent, std::vector<Stateway::StateDocument> from, Stateway::StateDocument to) {
  for (auto& document : from) agent.apply(std::move(document));
  auto const before = Snapshot::of(agent);
  auto const resources = resourcesOf(agent.chip());
  auto const waiting = waitingIn(agent.chip());
  Transition transition(agent);
  agent.apply(std::move(to));
  Plan plan;
  plan.writes = transition.writes();
  plan.interruptions = transition.interruptions();
  auto const after = Snapshot::of(agent);
  plan.tables = tablePlans(ItemList::compare(before.rows, after.rows).changes, resources, resourcesOf(agent.chip()));
  plan.waiting = newlyWaiting(waiting, waitingIn(agent.chip()));
  plan.asWanted = after.asWanted;
  return plan;
}

void printTables(std::ostream& out, Plan const& plan) {
  using Align = Columns::Align;
  Columns columns({Align::left, Align::right, Align::right, Align::right, Align::right, Align::right});
  columns.row({"TABLE", "ADDED", "CHANGED", "REMOVED", "FREE BEFORE", "FREE AFTER"});
  for (auto const& table : plan.tables) {
    columns.row({table.table, Kiln::toText(table.added), Kiln::toText(table.changed), Kiln::toText(table.removed),
                 Kiln::toText(table.freeBefore), Kiln::toText(table.freeAfter)});
  }
  if (!plan.tables.empty()) columns.print(out << '\n');
}

void printInterruptions(std::ostream& out, Plan const& plan) {
  out << plan.interruptions.size() << (plan.interruptions.size() == 1 ? " tunnel loses" : " tunnels lose")
      << " traffic meanwhile\n";
  for (auto const& one : plan.interruptions) {
    out << "  " << tunnelTypeText(one.type) << ' ' << Kiln::toText(one.vtep) << ": from write " << one.from;
    out << (one.lasts ? " to the end" : "") << ", after " << one.writes << (one.writes == 1 ? " write\n" : " writes\n");
  }
}

void print(std::ostream& out, std::string const& profile, Plan const& plan) {
  out << "Tried on a simulated chip of profile " << profile << ": nothing is applied to a switch\n"
      << plan.writes << " writes of rows\n";
  printTables(out, plan);
  printInterruptions(out << '\n', plan);
  if (!plan.waiting.empty()) out << "The first table that fills is " << plan.waiting.front().table << "; waiting:\n";
  for (auto const& one : plan.waiting) out << "  " << one.table << ' ' << one.key << '\n';
  out << (plan.asWanted ? "Everything is as wanted afterwards\n"
                        : "Not everything is as wanted afterwards: see tessel-agent run\n");
}

void writeWaiting(JsonWriter& json, std::vector<Waiting> const& waiting) {
  json.key("firstFull").text(waiting.empty() ? std::nullopt : std::optional(waiting.front().table));
  json.key("waiting").array();
  for (auto const& one : waiting) {
    json.object();
    json.key("table").text(std::string_view(one.table));
    json.key("key").text(std::string_view(one.key));
    json.objectEnd();
  }
  json.arrayEnd();
}

void write(JsonWriter& json, Plan const& plan) {
  json.key("writes").number(plan.writes);
  json.key("tables").array();
  for (auto const& table : plan.tables) {
    json.object();
    json.key("table").text(std::string_view(table.table));
    json.key("added").number(std::uint64_t{table.added});
    json.key("changed").number(std::uint64_t{table.changed});
    json.key("removed").number(std::uint64_t{table.removed});
    json.key("freeBefore").number(std::uint64_t{table.freeBefore});
    json.key("freeAfter").number(std::uint64_t{table.freeAfter});
    json.objectEnd();
  }
  json.arrayEnd();
  json.key("interruptions").array();
  for (auto const& one : plan.interruptions) {
    json.object();
    json.key("type").text(tunnelTypeText(one.type));
    json.key("vtep").text(std::string_view(Kiln::toText(one.vtep)));
    json.key("fromWrite").number(one.from);
    json.key("writes").number(one.writes);
    json.key("lasts").boolean(one.lasts);
    json.objectEnd();
  }
  json.arrayEnd();
  writeWaiting(json, plan.waiting);
  json.key("asWanted").boolean(plan.asWanted);
}

/// Prints an object of format tessel-plan/1 with the members that `members` writes.
void writeObject(std::ostream& out, std::string const& profile, WarningLog const& warnings,
                 Kiln::FunctionRef<void(JsonWriter&)> members) {
  JsonWriter json(out, JsonWriter::Layout::indented);
  json.object();
  json.key("format").text(std::string_view("tessel-plan/1"));
  json.key("profile").text(std::string_view(profile));
  members(json);
  writeWarnings(json, warnings.all());
  json.objectEnd();
  out << '\n';
}

int planFrom(PlanOptions const& options, std::ostream& out, std::ostream& err) {
  if (options.inputs.size() != 1) throw CLI::ArgumentMismatch("plan --from A: exactly one B is required");
  auto choices = options.choices;
  auto from = readOperand(options.from, choices);
  auto to = readOperand(options.inputs.front(), choices);
  choices.vlans.checkTaken();
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent();
  WarningLog warnings(options, err);
  for (auto const& document : from) agent->check(document);
  agent->check(to.back());
  for (auto const& document : from) warnings.add(document);
  warnings.add(to.back());
  auto const plan = planOf(*agent, std::move(from), std::move(to.back()));
  auto const& profile = agent->profile().name();
  if (options.json()) {
    writeObject(out, profile, warnings, [&](JsonWriter& json) { write(json, plan); });
  } else if (!options.quiet) {
    print(out, profile, plan);
  }
  return warnings.codeAfter(plan.asWanted ? kGood : kNotProgrammed);
}

void printGrowth(std::ostream& out, Growth const& growth) {
  out << "  " << growth.what << ": ";
  if (!growth.more) {
    out << (growth.limit.empty() ? "the input has none" : growth.limit) << '\n';
  } else {
    out << *growth.more << ", then " << growth.limit << " is full\n";
  }
}

void print(std::ostream& out, std::string const& profile, Fit const& fit) {
  out << "Tried on a simulated chip of profile " << profile << ": nothing is applied to a switch\n";
  if (!fit.fits()) {
    out << "Does not fit: the first table that fills is " << fit.waiting.front().table << "; waiting:\n";
    for (auto const& one : fit.waiting) out << "  " << one.table << ' ' << one.key << '\n';
    return;
  }
  out << "Fits. More of the same kind that would:\n";
  for (auto const& growth : fit.growth) printGrowth(out, growth);
}

void write(JsonWriter& json, Fit const& fit) {
  json.key("fits").boolean(fit.fits());
  writeWaiting(json, fit.waiting);
  json.key("more").array();
  for (auto const& growth : fit.growth) {
    json.object();
    json.key("what").text(growth.what);
    json.key("count").number(growth.more);
    json.key("limit").text(growth.limit.empty() ? std::nullopt : std::optional(growth.limit));
    json.objectEnd();
  }
  json.arrayEnd();
}

int planFit(PlanOptions options, std::ostream& out, std::ostream& err) {
  options.profile = options.fit;
  auto inputs = readInputs(options);
  AgentOptions::Traces const traces(options);
  WarningLog warnings(options, err);
  auto const profile = options.makeAgent()->profile().name();
  for (auto const& input : inputs) options.makeAgent()->check(input);
  for (auto const& input : inputs) warnings.add(input);
  auto const fit = fitOf(inputs.back(), [&] { return options.makeAgent(); });
  if (options.json()) {
    writeObject(out, profile, warnings, [&](JsonWriter& json) { write(json, fit); });
  } else if (!options.quiet) {
    print(out, profile, fit);
  }
  return warnings.codeAfter(fit.fits() ? kGood : kNotProgrammed);
}

}  // namespace

int planCommand(PlanOptions const& options, std::ostream& out, std::ostream& err) {
  if (options.from.empty() && options.fit.empty()) throw CLI::RequiredError("--from or --fit");
  return options.fit.empty() ? planFrom(options, out, err) : planFit(options, out, err);
}

}  // namespace Host
