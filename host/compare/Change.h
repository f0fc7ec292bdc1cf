#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiln/JsonOut.h"

namespace Host {

/// One thing that two states have otherwise, or that one of them lacks.
struct Change {
  enum class How { added, removed, changed };
  struct Attribute {
    std::string name;  ///< Empty for a thing that is one value.
    std::optional<std::string> from{}, to{};
  };

  How how = How::changed;
  std::string kind;  ///< A path of the state, a type of tunnel, a table.
  std::string key;
  std::vector<Attribute> attributes{};  ///< That differ.
};

/// An order in which numbers are compared as numbers and addresses as addresses, wherever a text has them.
bool valueLess(std::string_view a, std::string_view b);
/// By kind, then by the value of the key.
void sortByValue(std::vector<Change>& changes);

/// One line for each: "+ kind key: name=value", "- …", "~ kind key: name from -> to".
void printChanges(std::ostream& out, std::vector<Change> const& changes);
/// As an array of objects with "change", "kind", "key" and "attributes", each with "name", "from" and "to".
void writeChanges(Kiln::JsonWriter& json, std::vector<Change> const& changes);

}  // namespace Host
