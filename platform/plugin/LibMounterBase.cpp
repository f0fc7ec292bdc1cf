#include "platform/plugin/LibMounterBase.h"

namespace TesselLib {

Dovel::Ptr<Dovel::Node> MounterBase::sharedEntity(Dovel::String const& name) const {
  return sharedEntityDir() ? sharedEntityDir()->child(name) : nullptr;
}

}  // namespace TesselLib
