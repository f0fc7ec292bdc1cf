#include <CLI/Error.hpp>
#include <algorithm>
#include <ostream>
#include <set>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/compare/Operand.h"
#include "host/compare/Snapshot.h"
#include "host/compare/Transition.h"
#include "host/show/Columns.h"
#include "host/show/Resource.h"
#include "platform/asic/Store.h"

namespace Host {

namespace {

using Kiln::JsonWriter;

struct TablePlan {
  std::string table;
  std::size_t added = 0, removed = 0, changed = 0;
  std::uint32_t freeBefore = 0, freeAfter = 0;
};
/// An entry that waits for a row.
struct Waiting {
  std::uint32_t write;  ///< The number of its last write, for their order.
  std::string table;
  std::string key;

  auto operator<=>(Waiting const&) const = default;
};

struct Plan {
  std::uint64_t writes = 0;
  std::vector<TablePlan> tables;  ///< By name, those that change.
  std::vector<Interruption> interruptions;
  std::vector<Waiting> waiting;  ///< That did not wait before, oldest first.
  bool asWanted = false;
};

std::vector<Waiting> waitingIn(Asic::Chip const& chip) {
  std::vector<Waiting> waiting;
  for (auto const* store : chip.stores()) {
    // One that could not fit into the empty table either is not in its queue.
    if (store->refused() == 0) continue;
    store->forEachEntry([&](Asic::EntryView const& entry) {
      if (entry.state() == Asic::EntryState::full)
        waiting.push_back({entry.handle().record()->lastWrite, std::string(store->name()), entry.key()});
    });
  }
  std::sort(waiting.begin(), waiting.end());
  return waiting;
}

std::vector<Waiting> newlyWaiting(std::vector<Waiting> const& before, std::vector<Waiting> after) {
  std::set<std::pair<std::string, std::string>> known;
  for (auto const& one : before) known.emplace(one.table, one.key);
  std::erase_if(after, [&](Waiting const& one) { return known.contains({one.table, one.key}); });
  return after;
}

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

void writeWaiting(JsonWriter& json, Plan const& plan) {
  json.key("firstFull").text(plan.waiting.empty() ? std::nullopt : std::optional(plan.waiting.front().table));
  json.key("waiting").array();
  for (auto const& one : plan.waiting) {
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
  writeWaiting(json, plan);
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

}  // namespace

int planCommand(PlanOptions const& options, std::ostream& out, std::ostream& err) {
  return planFrom(options, out, err);
}

}  // namespace Host
