#pragma once

#include "platform/kiln/Entity.h"

// Records of neighbouring features that this one mounts, stores and passes on without reading them. One that is read
// gets a header of its own.

/// A named entity without attributes.
#define TESSEL_OPAQUE(Namespace_, Class_)            \
  namespace Namespace_ {                             \
  class Class_ final : public Kiln::NamedEntity {    \
    KILN_TYPE(Namespace_::Class_, Kiln::NamedEntity) \
                                                     \
   public:                                           \
    using NamedEntity::NamedEntity;                  \
  };                                                 \
  }

TESSEL_OPAQUE(Interface, VlanIntfConfigDir)
TESSEL_OPAQUE(Routing::Multicast, McastEvpnStatus)
