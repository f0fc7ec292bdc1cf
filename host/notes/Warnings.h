#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiln/JsonIn.h"

namespace Host {

/// Something of an input that the state does not have, or has otherwise.
struct Warning {
  std::string kind;         ///< A word for programs, such as "no-vlan"; docs/state.md lists them.
  std::string file;         ///< The file, or the directory in which one is missing.
  std::string entry;        ///< Place and value, "/3/dst: found \"10.0.0.1\""; empty: the file as a whole.
  std::string ignored;      ///< What was passed over, or is uncertain, and why.
  std::string consequence;  ///< What follows from it for the switch; empty: nothing more.

  /// One line without "warning: ".
  std::string text() const;
  auto operator<=>(Warning const&) const = default;
};

/// Warnings in the order in which they occur, each once.
class Warnings {
 public:
  Warnings() = default;
  explicit Warnings(std::vector<Warning> const& first) {
    for (auto const& each : first) add(each);
  }
  void add(Warning warning);
  /// About a value of a document.
  void add(std::string_view kind, Kiln::JsonIn at, std::string ignored, std::string consequence = "");

  std::vector<Warning> const& all() const { return all_; }

 private:
  std::vector<Warning> all_;
  std::set<Warning> seen_;
};

}  // namespace Host
