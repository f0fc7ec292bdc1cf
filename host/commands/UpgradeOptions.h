#pragma once

#include <memory>
#include <optional>

#include "host/commands/Commands.h"
#include "host/output/OutputFile.h"

namespace Host {

/// The document of `--restore-upgrade`; null without one. Throws `InputError` for one that can't be used.
std::shared_ptr<Kiln::JsonDocument const> upgradeToRestore(RunOptions const& options);

/// Writes the document of `--save-upgrade`, if there is one.
class UpgradeSaver {
 public:
  /// Throws `InputError` for a file that can't be written.
  explicit UpgradeSaver(RunOptions const& options);
  /// Throws the same. REQUIRES: called once at most.
  void save(Agent const& agent);

 private:
  std::optional<OutputFile> file_;
};

}  // namespace Host
