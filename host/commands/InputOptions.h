#pragma once

#include <CLI/App.hpp>
#include <iosfwd>
#include <string>
#include <vector>

#include "host/import/Choices.h"
#include "host/notes/Warnings.h"
#include "platform/document/Document.h"

namespace Host {

/// The options of commands that read inputs.
struct InputOptions {
  std::string format = "text";
  Choices choices;
  bool strict = false;  ///< A warning ends in exit code 1.
  bool quiet = false;   ///< Neither warnings nor, as text, results: the exit code alone.
  std::vector<std::string> inputs;

  void addTo(CLI::App& command);
  bool json() const { return format == "json"; }
};

/// Reads the inputs and the choices about them. Throws `InputError` for the first that can't be used, or a VLAN for a
/// VNI that none has.
std::vector<Stateway::StateDocument> readInputs(InputOptions const& options);

/// Collects the warnings of documents, each once, and prints them where the options ask for it.
class WarningLog {
 public:
  /// Says where there is no input that a sample is shown. REQUIRES: both outlive this.
  WarningLog(InputOptions const& options, std::ostream& err);

  /// Those of the document's notes. Throws `InputError` for notes that can't be read.
  void add(Stateway::StateDocument const& document);
  std::vector<Warning> const& all() const { return warnings_.all(); }
  /// The exit code of a command whose result alone would end in `code`.
  int codeAfter(int code) const;

 private:
  InputOptions const& options_;
  std::ostream& err_;
  Warnings warnings_;
};

}  // namespace Host
