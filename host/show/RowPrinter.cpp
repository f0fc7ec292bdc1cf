#include "host/show/RowPrinter.h"

#include <array>
#include <ostream>
#include <utility>

#include "host/show/Chain.h"
#include "host/show/FieldText.h"
#include "host/show/HopRows.h"
#include "platform/kiln/Text.h"

namespace Host {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 16> kFieldWords{{
    {"vpHandle", "virtual port"},
    {"egrL3TunnelTableHandle", "outer header"},
    {"ulEntryHandle", "underlay"},
    {"memberBlockHandle", "members"},
    {"nextHopHandle", "next hop"},
    {"l3Oif2Handle", "outgoing VLAN"},
    {"oif1Handle", "encapsulation"},
    {"destinationHandle", "destination"},
    {"svpHandle", "virtual port"},
    {"groupOptionHandle", "option"},
    {"dvpHandle", "virtual port"},
    {"nhHandle", "next hop"},
    {"virtualPortHandle", "virtual port"},
    {"l3NextHop2Handle", "next hop"},
    {"herNextHop2Handle", "next hop"},
    {"oifHandle", "outgoing VLAN"},
}};

}  // namespace

std::string_view wordOf(std::string_view field) {
  for (auto const& [name, word] : kFieldWords) {
    if (name == field) return word;
  }
  return field;
}

std::string rowName(Asic::EntryHandle const& row) {
  auto const name = nameOf(row.keyText());
  return name == "default" ? "default row" : name;
}

void RowPrinter::print(std::size_t depth, std::string_view word, Asic::EntryHandle const& row) {
  std::string const indent(2 * depth, ' ');
  bool const above = !printed_.insert(row.record()).second;
  out_ << indent << word << ": " << row.tableName() << ' ' << rowName(row) << ", " << rowText(row.row()) << ", "
       << stateText(row.state()) << (above ? ", as above\n" : "\n");
  if (above) return;
  if (auto const values = valuesOf(row); !values.empty()) out_ << indent << "    " << values << '\n';
  for (auto const& link : linksOf(row)) print(depth + 1, wordOf(link.field), *link.target);
  if (auto const port = portText(row); !port.empty()) out_ << indent << "  to " << port << '\n';
}

void RowPrinter::print(std::size_t depth, std::string_view word, NeededRow const& needed) {
  if (needed.row) return print(depth, word, *needed.row);
  out_ << std::string(2 * depth, ' ') << word << ": no row in " << needed.table << '\n';
}

void writeChain(Kiln::JsonWriter& json, Asic::EntryHandle::PtrConst const& row) {
  if (!row) return json.null();
  json.object();
  json.key("table").text(row->tableName());
  json.key("key").text(std::string_view(rowName(*row)));
  json.key("row").number(row->row() ? std::optional(row->row()->value()) : std::nullopt);
  json.key("state").text(stateText(row->state()));
  json.key("links").array();
  for (auto const& link : linksOf(*row)) {
    json.object();
    json.key("field").text(link.field);
    json.key("to");
    writeChain(json, link.target);
    json.objectEnd();
  }
  json.arrayEnd();
  json.objectEnd();
}

}  // namespace Host
