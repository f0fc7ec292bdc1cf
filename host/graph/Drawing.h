#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/asic/EntryHandle.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

/// A directed graph of what is wanted, rows of the chip, and gaps, for Graphviz or as JSON. Nodes and edges are printed
/// in the order in which they were added.
class Drawing {
 public:
  enum class Kind { wish, row, end, gap };

  /// Returns the node's number.
  std::size_t node(Kind kind, std::string label);
  void edge(std::size_t from, std::size_t to, std::string label = "");
  /// Adds a row with all that it leads to, once however many nodes lead to it; a row that the chip does not have leads
  /// to a gap. Returns its node.
  std::size_t row(Asic::EntryHandle const& row);

  /// In the language DOT.
  void print(std::ostream& out, std::string const& title) const;
  /// The same as members "nodes" and "edges". REQUIRES: inside an object.
  void write(Kiln::JsonWriter& json) const;

 private:
  struct Node {
    Kind kind;
    std::string label;
  };
  struct Edge {
    std::size_t from, to;
    std::string label;
  };
  std::vector<Node> nodes_;
  std::vector<Edge> edges_;
  std::map<Asic::RecordBase const*, std::size_t> rows_;
};

}  // namespace Host
