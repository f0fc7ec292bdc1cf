#include "host/graph/Drawing.h"

#include <fmt/format.h>

#include <array>
#include <ostream>

#include "host/show/Chain.h"
#include "host/show/FieldText.h"
#include "host/show/HopRows.h"
#include "host/show/NeededRow.h"
#include "host/show/RowPrinter.h"

namespace Host {

namespace {

struct Look {
  std::string_view word;
  std::string_view dot;
};
constexpr std::array<Look, 4> kLooks{{{"wish", "shape=box, style=rounded"},
                                      {"row", "shape=box"},
                                      {"end", "shape=ellipse"},
                                      {"gap", "shape=box, style=dashed, color=red, fontcolor=red"}}};

Look const& lookOf(Drawing::Kind kind) { return kLooks[static_cast<std::size_t>(kind)]; }

/// As a string of DOT, quoted.
std::string quoted(std::string const& text) {
  std::string result = "\"";
  for (char const c : text) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

/// The first fields of a row, as many as a reader takes in.
std::string mainFields(Asic::EntryHandle const& row) {
  constexpr std::size_t most = 60;
  auto const values = valuesOf(row);
  if (values.size() <= most) return values;
  auto const end = values.rfind(' ', most);
  return values.substr(0, end == values.npos ? most : end) + " …";
}

}  // namespace

std::size_t Drawing::node(Kind kind, std::string label) {
  nodes_.push_back({kind, std::move(label)});
  return nodes_.size() - 1;
}

void Drawing::edge(std::size_t from, std::size_t to, std::string label) {
  edges_.push_back({from, to, std::move(label)});
}

std::size_t Drawing::row(Asic::EntryHandle const& row) {
  if (auto const known = rows_.find(row.record()); known != rows_.end()) return known->second;
  auto label = fmt::format("{}\n{}\n{}, {}", row.tableName(), rowName(row), rowText(row.row()), stateText(row.state()));
  if (auto const fields = mainFields(row); !fields.empty()) label += '\n' + fields;
  auto const self = node(Kind::row, std::move(label));
  rows_.emplace(row.record(), self);
  if (row.state() != Asic::EntryState::written) edge(self, node(Kind::gap, refusalOf(row)));
  for (auto const& link : linksOf(row)) {
    auto const target = this->row(*link.target);
    edge(self, target, std::string(wordOf(link.field)));
  }
  if (auto const port = portText(row); !port.empty()) edge(self, node(Kind::end, port));
  return self;
}

void Drawing::print(std::ostream& out, std::string const& title) const {
  out << "digraph " << quoted(title) << " {\n  rankdir=LR;\n  node [fontname=\"monospace\", fontsize=10];\n";
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    out << "  n" << i << " [label=" << quoted(nodes_[i].label) << ", " << lookOf(nodes_[i].kind).dot << "];\n";
  }
  for (auto const& edge : edges_) {
    out << "  n" << edge.from << " -> n" << edge.to << " [label=" << quoted(edge.label) << "];\n";
  }
  out << "}\n";
}

void Drawing::write(Kiln::JsonWriter& json) const {
  json.key("nodes").array();
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    json.object();
    json.key("id").number(std::uint64_t{i});
    json.key("kind").text(lookOf(nodes_[i].kind).word);
    json.key("label").text(std::string_view(nodes_[i].label));
    json.objectEnd();
  }
  json.arrayEnd();
  json.key("edges").array();
  for (auto const& edge : edges_) {
    json.object();
    json.key("from").number(std::uint64_t{edge.from});
    json.key("to").number(std::uint64_t{edge.to});
    json.key("label").text(std::string_view(edge.label));
    json.objectEnd();
  }
  json.arrayEnd();
}

}  // namespace Host
