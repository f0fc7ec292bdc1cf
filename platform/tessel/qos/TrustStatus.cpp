#include "platform/tessel/qos/TrustStatus.h"

namespace TesselCommon::Qos {

TrustStatusSm::TrustStatusSm(Dovel::Ptr<Kiln::Dir const> qosTrustStatusDir, Dovel::Ptr<TrustStatus> local)
    : qosTrustStatusDir_(std::move(qosTrustStatusDir)),
      local_(std::move(local)),
      dir_(*this, qosTrustStatusDir_, Kiln::SubscribeOnly{}) {
  handleDir();
}

void TrustStatusSm::handleDir() {
  if (!dir_) return;
  for (auto const& [name, child] : dir_->children()) {
    if (auto const status = Dovel::cast<TrustStatus const>(child)) return source_.notifierIs(status);
  }
  source_.notifierIs(nullptr);
}

void TrustStatusSm::handleSource() {
  Dovel::Ptr<TrustStatus const> const source = source_.get();
  local()->tosBasePtrIs(source->tosBasePtr());
  local()->remarkBasePtrIs(source->remarkBasePtr());
}

}  // namespace TesselCommon::Qos
