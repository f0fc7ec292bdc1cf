#include "platform/anvil/IoctlDrv.h"

#include "platform/kiln/Text.h"

namespace Anvil {

void IoctlDrv::vniToVlanMap(std::uint32_t vni, std::uint16_t vlan) {
  if (!fab_) return;
  auto const number = fab_->requests() + 1;
  fab_->requestsIs(number);
  fab_->requestIs(static_cast<std::uint32_t>(number), "vni " + Kiln::toText(vni) + " vlan " + Kiln::toText(vlan));
  if (number > IoctlDrvFab::kept) fab_->requestDel(static_cast<std::uint32_t>(number - IoctlDrvFab::kept));
  if (vlan == 0) {
    fab_->vniToVlanDel(vni);
  } else {
    fab_->vniToVlanIs(vni, vlan);
  }
}

}  // namespace Anvil
