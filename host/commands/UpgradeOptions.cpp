#include "host/commands/UpgradeOptions.h"

#include "host/upgrade/UpgradeDocument.h"

namespace Host {

std::shared_ptr<Kiln::JsonDocument const> upgradeToRestore(RunOptions const& options) {
  if (options.restoreUpgrade.empty()) return nullptr;
  return std::make_shared<Kiln::JsonDocument const>(readUpgrade(options.restoreUpgrade));
}

UpgradeSaver::UpgradeSaver(RunOptions const& options) {
  if (!options.saveUpgrade.empty()) file_.emplace(options.saveUpgrade);
}

void UpgradeSaver::save(Agent const& agent) {
  if (file_) file_->commit(upgradeText(agent));
}

}  // namespace Host
