#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/kiln/JsonIn.h"

namespace Host {

/// What a scenario says must hold of the report of an agent.
///
/// The path leads through the report, as `run --format json` prints it, by names separated by '/' ('~1' for a '/' in a
/// name, '~0' for '~'). In an array, "MEMBER=VALUE" selects the elements with that member, "A=1&B=2" those with both,
/// a number the element at that index, another name a member of each element; "#" at the end is the number of
/// elements. Everything that the path selects must
/// be the wanted value; of a wanted object, the members that it names. A wanted null also holds where there is nothing.
class Expectation {
 public:
  /// Throws `InputError` for a path without a name.
  Expectation(std::string path, Kiln::JsonIn const& wanted);

  std::string const& path() const { return path_; }
  /// As JSON text.
  std::string wanted() const;
  /// What is found instead, as JSON text, "nothing" where there is nothing; nothing if the expectation holds.
  std::optional<std::string> violation(Kiln::JsonIn const& report) const;

 private:
  std::string path_;
  std::vector<std::string> names_;
  Kiln::JsonDocument wanted_;
};

}  // namespace Host
