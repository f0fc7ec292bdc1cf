#include "platform/vxlan/RemoteVniToSBDVlanMergeSm.h"

namespace Vxlan {

RemoteVniToSBDVlanMergeSm::RemoteVniToSBDVlanMergeSm(Dovel::Ptr<RemoteVniToVlanStatus const> irb,
                                                     Dovel::Ptr<RemoteVniToVlanStatus const> fixed,
                                                     Dovel::Ptr<RemoteVniToVlanStatus> merged)
    : irb_(*this, std::move(irb), Kiln::SubscribeOnly{}),
      static_(*this, std::move(fixed), Kiln::SubscribeOnly{}),
      merged_(std::move(merged)) {
  for (auto const* source : {&irb_, &static_}) {
    for (auto const& vni : Kiln::keysOf((*source)->vniToVlanColl())) handleVni(vni);
  }
}

void RemoteVniToSBDVlanMergeSm::sourceDispatch(Dovel::Change const& change) {
  if (change.id == RemoteVniToVlanStatus::vniToVlanId) handleVni(change.keyAs<VniExt>());
}

void RemoteVniToSBDVlanMergeSm::handleVni(VniExt vni) {
  for (auto const* source : {&irb_, &static_}) {
    if ((*source)->vniToVlanHas(vni)) return merged_->vniToVlanIs(vni, (*source)->vniToVlan(vni));
  }
  merged_->vniToVlanDel(vni);
}

}  // namespace Vxlan
