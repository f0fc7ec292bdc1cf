#pragma once

#include "platform/kiln/Dir.h"
#include "platform/plugin/Mounter.h"

namespace TesselLib {

/// A mounter of an agent that shares entities among its plug-ins.
class MounterBase : public Plugin::Mounter {
  KILN_TYPE(TesselLib::MounterBase, Plugin::Mounter)
  KILN_ATTR(0x21, Dovel::Ptr<Kiln::Dir>, sharedEntityDir)  ///< Set by the host before `doInit`.

 public:
  /// The agent-wide entity of that name; null if the host has not created it.
  Dovel::Ptr<Dovel::Node> sharedEntity(Dovel::String const& name) const;
};

}  // namespace TesselLib
