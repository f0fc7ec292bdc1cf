#pragma once

#include "platform/kiln/Entity.h"

namespace Evpn {

/// Whether remote VTEPs are learnt from a routing protocol.
class EvpnStatus final : public Kiln::NamedEntity {
  KILN_TYPE(Evpn::EvpnStatus, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, evpnEnabled)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Evpn
