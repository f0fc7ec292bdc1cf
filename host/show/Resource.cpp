#include "host/show/Resource.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "host/show/Columns.h"
#include "host/show/Sections.h"
#include "platform/asic/Store.h"
#include "platform/kiln/Text.h"

namespace Host {

namespace {

unsigned percentOf(std::uint32_t used, std::uint32_t rows) {
  if (used == 0 || rows == 0) return 0;
  return std::max(1U, static_cast<unsigned>(std::uint64_t{used} * 100 / rows));
}

}  // namespace

std::vector<Resource> resourcesOf(Asic::Chip const& chip) {
  std::vector<Resource> resources;
  for (auto const* store : sortedStores(chip)) {
    auto const rows = store->capacity();
    auto const used = store->used();
    resources.push_back({.table = store->name(),
                         .rows = rows,
                         .used = used,
                         .free = rows - std::min(rows, used),
                         .waiting = store->waiting(),
                         .most = store->mostUsed(),
                         .refused = store->refused(),
                         .percent = percentOf(used, rows)});
  }
  return resources;
}

void printResources(std::ostream& out, Asic::Chip const& chip) {
  using Align = Columns::Align;
  Columns columns(
      {Align::left, Align::right, Align::right, Align::right, Align::right, Align::right, Align::right, Align::right});
  columns.row({"TABLE", "ROWS", "USED", "USED %", "FREE", "MOST", "WAITING", "REFUSED"});
  for (auto const& one : resourcesOf(chip)) {
    columns.row({std::string(one.table), Kiln::toText(one.rows), Kiln::toText(one.used), Kiln::toText(one.percent),
                 Kiln::toText(one.free), Kiln::toText(one.most), Kiln::toText(one.waiting), Kiln::toText(one.refused)});
  }
  columns.print(out);
}

void writeResources(Kiln::JsonWriter& json, Asic::Chip const& chip) {
  json.key("resource").array();
  for (auto const& one : resourcesOf(chip)) {
    json.object();
    json.key("table").text(one.table);
    for (auto const& [name, value] : {std::pair("rows", std::uint64_t{one.rows}),
                                      {"used", one.used},
                                      {"percent", one.percent},
                                      {"free", one.free},
                                      {"most", one.most},
                                      {"waiting", one.waiting},
                                      {"refused", one.refused}}) {
      json.key(name).number(value);
    }
    json.objectEnd();
  }
  json.arrayEnd();
}

void printLogTotals(std::ostream& out, Kiln::LogCapture const& logs) {
  std::vector<std::pair<Kiln::LogRecord const*, std::size_t>> totals;
  for (auto const& record : logs.records()) {
    auto const isIts = [&](auto const& total) { return total.first->name == record.name; };
    auto const total = std::find_if(totals.begin(), totals.end(), isIts);
    total == totals.end() ? void(totals.emplace_back(&record, 1)) : void(++total->second);
  }
  for (auto const& [first, count] : totals) {
    out << "%TESSEL-" << first->severity << '-' << first->name << ": ";
    if (count > 1) out << count << " times, the first: ";
    out << first->text << '\n';
  }
}

}  // namespace Host
