#pragma once

#include "platform/kiln/Sm.h"
#include "platform/vxlan/VxlanConfig.h"

namespace Vxlan {

/// Merges two sources of `RemoteVniToVlanStatus` into one: routing's mappings precede the static ones. Writes
/// `merged`, of which it is the only writer. Main thread only.
class RemoteVniToSBDVlanMergeSm final : public Kiln::Sm {
  void sourceDispatch(Dovel::Change const& change);

  KILN_BASE_TYPE(Vxlan::RemoteVniToSBDVlanMergeSm)

 public:
  RemoteVniToSBDVlanMergeSm(Dovel::Ptr<RemoteVniToVlanStatus const> irb, Dovel::Ptr<RemoteVniToVlanStatus const> fixed,
                            Dovel::Ptr<RemoteVniToVlanStatus> merged);

 private:
  using Self = RemoteVniToSBDVlanMergeSm;

  void handleVni(VniExt vni);

  Kiln::Watch<RemoteVniToVlanStatus const, &Self::sourceDispatch> irb_;
  Kiln::Watch<RemoteVniToVlanStatus const, &Self::sourceDispatch> static_;
  Dovel::Ptr<RemoteVniToVlanStatus> merged_;
};

}  // namespace Vxlan
