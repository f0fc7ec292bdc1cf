#pragma once

#include <iosfwd>
#include <string>

#include "host/commands/Commands.h"
#include "platform/kiln/FunctionRef.h"
#include "platform/kiln/JsonOut.h"

namespace Host {

/// Prints the sections of `run`: after each step or at the end, as text or JSON. Notes whether the agent
/// has done what its state asks for.
///
/// REQUIRES: all arguments of the constructor outlive this object.
class Shower {
 public:
  /// `steps`: the output has a list of steps whether or not the options ask for it.
  Shower(RunOptions const& options, Agent const& agent, WarningLog const& warnings, std::ostream& out, bool steps);

  /// Where the options ask for it, the sections as they are after this step.
  void step(std::string const& name);
  /// The same with what the step itself has to show: `json` adds members to its object, `text` is printed below its
  /// heading.
  void step(std::string const& name, Kiln::FunctionRef<void(Kiln::JsonWriter&)> json, std::string const& text);
  /// Ends the output, with the sections unless each step showed them. Returns whether everything was as wanted
  /// in the last sections.
  bool end();

 private:
  void show();

  RunOptions const& options_;
  Agent const& agent_;
  WarningLog const& warnings_;
  std::ostream& out_;
  Kiln::JsonWriter json_;
  bool steps_;
  bool good_ = true;
};

}  // namespace Host
