#pragma once

#include "platform/kiln/Entity.h"
#include "platform/meshal/IpAddr.h"

// Records of neighbouring features that this one mounts, stores and passes on without reading them. One that is read
// gets a header of its own.

namespace Interface {

class VlanIntfConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Interface::VlanIntfConfigDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Interface

namespace L2Rib {

class FloodSetOutput final : public Kiln::NamedEntity {
  KILN_TYPE(L2Rib::FloodSetOutput, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace L2Rib

namespace MrouteLib {

class MrouteVxlanDecapTable final : public Kiln::NamedEntity {
  KILN_TYPE(MrouteLib::MrouteVxlanDecapTable, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;

  /// The path of the routes of a family in shared memory.
  static char const* mountPath(Meshal::AddressFamily af) {
    return af == Meshal::AddressFamily::ipv6 ? "routing6/multicast/vxlanDecap" : "routing/multicast/vxlanDecap";
  }
};

}  // namespace MrouteLib

namespace Multicast::Tunnel {

class ConfigDirColl final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Tunnel::ConfigDirColl, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class StatusDirColl final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Tunnel::StatusDirColl, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Multicast::Tunnel

namespace Multicast::Vxlan {

class VxlanMcastTunnelConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::VxlanMcastTunnelConfigDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class VxlanMcastTunnelStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::VxlanMcastTunnelStatusDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class VxlanBumTunnelConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::VxlanBumTunnelConfigDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class VxlanBumTunnelStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::VxlanBumTunnelStatusDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class VxlanMcastHerTunnelConfigDir final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::VxlanMcastHerTunnelConfigDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class VxlanMcastHerTunnelStatusDir final : public Kiln::NamedEntity {
  KILN_TYPE(Multicast::Vxlan::VxlanMcastHerTunnelStatusDir, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Multicast::Vxlan

namespace Routing::Multicast {

class McastEvpnStatus final : public Kiln::NamedEntity {
  KILN_TYPE(Routing::Multicast::McastEvpnStatus, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Routing::Multicast

namespace VaneHelper {

class VaneHelperVniConfig final : public Kiln::NamedEntity {
  KILN_TYPE(VaneHelper::VaneHelperVniConfig, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

class VaneHelperVniStatus final : public Kiln::NamedEntity {
  KILN_TYPE(VaneHelper::VaneHelperVniStatus, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace VaneHelper

namespace VxlanController {

class VtepStatusDirV2 final : public Kiln::NamedEntity {
  KILN_TYPE(VxlanController::VtepStatusDirV2, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace VxlanController
