#pragma once

#include "platform/kiln/Entity.h"

namespace TesselL3Unicast {

/// Whether a feature has brought its tables up and serves.
class SmRunningState final : public Kiln::NamedEntity {
  KILN_TYPE(TesselL3Unicast::SmRunningState, Kiln::NamedEntity)
  KILN_ATTR(0x102, bool, running)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace TesselL3Unicast
