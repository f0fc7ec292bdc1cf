#include "TesselVxlan/nexthop/NextHopTableProgrammerBase.h"

namespace TesselVxlan {

std::string NextHopTableProgrammerBase::handleText(Handle const& handle) {
  std::string text;
  Asic::appendHandleText(text, handle);
  return text;
}

}  // namespace TesselVxlan
