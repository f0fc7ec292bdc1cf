#pragma once

#include "platform/kiln/Entity.h"

namespace Bridging {

/// Held only.
class Config final : public Kiln::NamedEntity {
  KILN_TYPE(Bridging::Config, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

/// Handed on only.
class HwCapabilities final : public Kiln::NamedEntity {
  KILN_TYPE(Bridging::HwCapabilities, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};

}  // namespace Bridging
