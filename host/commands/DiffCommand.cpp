#include <algorithm>
#include <array>
#include <ostream>
#include <utility>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/compare/Operand.h"
#include "host/compare/Snapshot.h"
#include "host/compare/Wish.h"

namespace Host {

namespace {

using Documents = std::vector<Stateway::StateDocument>;

/// The changes of one section.
struct Section {
  std::string_view name;
  std::vector<Change> changes;
};

struct Difference {
  std::vector<Section> sections;
  std::size_t rowsApart = 0;     ///< Rows of the same contents in other places.
  std::size_t tunnelsApart = 0;  ///< The same of tunnels, with other ids.

  bool empty() const {
    return std::all_of(sections.begin(), sections.end(),
                       [](Section const& section) { return section.changes.empty(); });
  }
};

Snapshot snapshotOf(AgentOptions const& options, Documents documents) {
  auto const agent = options.makeAgent();
  for (auto& document : documents) agent->apply(std::move(document));
  return Snapshot::of(*agent);
}

Difference differenceOf(DiffOptions const& options, std::vector<Change> wish, Snapshot const& from,
                        Snapshot const& to) {
  auto tunnels = ItemList::compare(from.tunnels, to.tunnels);
  auto rows = ItemList::compare(from.rows, to.rows);
  Difference difference;
  difference.sections = {{"wish", std::move(wish)},
                         {"tunnels", std::move(tunnels.changes)},
                         {"vni", ItemList::compare(from.mappings, to.mappings).changes},
                         {"groups", ItemList::compare(from.groups, to.groups).changes},
                         {"rows", std::move(rows.changes)},
                         {"chip", ItemList::compare(from.chip, to.chip).changes}};
  difference.rowsApart = rows.numbersApart;
  difference.tunnelsApart = tunnels.numbersApart;
  std::erase_if(difference.sections, [&](Section const& section) {
    return std::find(options.show.begin(), options.show.end(), section.name) == options.show.end();
  });
  return difference;
}

void printApart(std::ostream& out, Difference const& difference) {
  out << difference.rowsApart << " rows and " << difference.tunnelsApart
      << " tunnels are the same but for their numbers\n";
}

void print(std::ostream& out, DiffOptions const& options, Difference const& difference) {
  bool const apart = difference.rowsApart + difference.tunnelsApart != 0;
  if (difference.empty()) {
    out << "No difference";
    if (apart) printApart(out << "; ", difference);
    if (!apart) out << '\n';
    return;
  }
  out << "--- " << options.from << "\n+++ " << options.to << '\n';
  for (auto const& [name, changes] : difference.sections) {
    if (changes.empty()) continue;
    out << "@@ " << name << ": " << changes.size() << '\n';
    printChanges(out, changes);
  }
  if (apart) printApart(out, difference);
}

void write(std::ostream& out, DiffOptions const& options, Difference const& difference, WarningLog const& warnings) {
  Kiln::JsonWriter json(out, Kiln::JsonWriter::Layout::indented);
  json.object();
  json.key("format").text(std::string_view("tessel-diff/1"));
  json.key("from").text(std::string_view(options.from));
  json.key("to").text(std::string_view(options.to));
  json.key("equal").boolean(difference.empty());
  for (auto const& [name, changes] : difference.sections) writeChanges(json.key(name), changes);
  json.key("numbersApart").object();
  json.key("rows").number(std::uint64_t{difference.rowsApart});
  json.key("tunnels").number(std::uint64_t{difference.tunnelsApart});
  json.objectEnd();
  writeWarnings(json, warnings.all());
  json.objectEnd();
  out << '\n';
}

}  // namespace

int diffCommand(DiffOptions const& options, std::ostream& out, std::ostream& err) {
  auto choices = options.choices;
  auto from = readOperand(options.from, choices);
  auto to = readOperand(options.to, choices);
  choices.vlans.checkTaken();
  AgentOptions::Traces const traces(options);
  WarningLog warnings(options, err);
  {
    auto const agent = options.makeAgent();
    for (auto const* documents : {&from, &to}) {
      for (auto const& document : *documents) agent->check(document);
    }
  }
  for (auto const* documents : {&from, &to}) {
    for (auto const& document : *documents) warnings.add(document);
  }
  auto wish = wishChanges(from.back(), to.back());
  auto const before = snapshotOf(options, std::move(from));
  auto const after = snapshotOf(options, std::move(to));
  auto const difference = differenceOf(options, std::move(wish), before, after);
  if (options.json()) {
    write(out, options, difference, warnings);
  } else if (!options.quiet) {
    print(out, options, difference);
  }
  return warnings.codeAfter(difference.empty() ? kGood : kNotProgrammed);
}

}  // namespace Host
