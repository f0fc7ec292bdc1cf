#pragma once

#include "platform/anvil/IoctlDrv.h"
#include "platform/vxlan/Vni.h"

namespace Vane {

/// The forwarding abstraction's access to the packet driver.
class PktDrv final : public Kiln::NamedEntity {
  KILN_TYPE(Vane::PktDrv, Kiln::NamedEntity)

 public:
  PktDrv(Dovel::String name, Dovel::Ptr<Anvil::IoctlDrv> ioctlDrv)
      : NamedEntity(std::move(name)), ioctlDrv_(std::move(ioctlDrv)) {}

  /// Assigns a VLAN to the packets of a VNI; VLAN 0 removes the assignment. No VNI is passed on as its number.
  void doPktDrvVniToVlanMap(Vxlan::VniExtOrNone vni, std::uint16_t vlan) const {
    ioctlDrv_->vniToVlanMap(vni.value(), vlan);
  }

 private:
  Dovel::Ptr<Anvil::IoctlDrv> ioctlDrv_;
};

}  // namespace Vane
