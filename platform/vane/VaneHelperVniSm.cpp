#include "platform/vane/VaneHelperVniSm.h"

namespace VaneHelper {

using Vane::VXLAN::VtiVlanKey;
using Vane::VXLAN::VtiVniKey;

VaneHelperVniSm::VaneHelperVniSm(Dovel::Ptr<VaneHelperVniConfig const> helperVniConfig,
                                 Dovel::Ptr<VaneHelperVniStatus> helperVniStatus)
    : helperVniConfig_(*this, std::move(helperVniConfig), Kiln::SubscribeOnly{}),
      helperVniStatus_(std::move(helperVniStatus)) {}

void VaneHelperVniSm::handleHwInit() {}
void VaneHelperVniSm::handleHwCleanup() {}
void VaneHelperVniSm::handleRemoteVniConfig(VtiVniKey const&) {}

void VaneHelperVniSm::helperVniConfigDispatch(Dovel::Change const& change) {
  if (change.id == VaneHelperVniConfig::vlanVniMapId) {
    auto const& key = change.keyAs<VtiVlanKey>();
    if (helperVniConfig()->vlanVniMapHas(key) || isProgrammed(key)) handleVlanVniMap(key);
  } else if (change.id == VaneHelperVniConfig::remoteVniConfigId) {
    auto const& key = change.keyAs<VtiVniKey>();
    bool const wanted = helperVniConfig()->remoteVniConfig(key).action() != VaneHelperVniConfigEntry::none;
    if (wanted || helperVniStatus()->remoteVniStatusEntryHas(key)) handleRemoteVniConfig(key);
  }
}

}  // namespace VaneHelper
