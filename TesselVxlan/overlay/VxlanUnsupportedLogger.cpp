#include "TesselVxlan/overlay/VxlanUnsupportedLogger.h"

#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"

KILN_TRACE_FILE("VxlanUnsupportedLogger");

namespace TesselVxlan {

namespace {

Kiln::LogHandle vxlanUnsupported(TesselLog::TESSEL_PROFILE_VXLAN_UNSUPPORTED, 0, 1.0, 0, 0);

}  // namespace

VxlanUnsupportedLogger::VxlanUnsupportedLogger(bool profileSupportsVxlan,
                                               Dovel::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir)
    : profileSupportsVxlan_(profileSupportsVxlan),
      vtiStatusDir_(*this, std::move(vtiStatusDir), Kiln::SubscribeOnly{}) {
  handleVtiStatus();
}

void VxlanUnsupportedLogger::vtiStatusDirDispatch(Dovel::Change const& change) {
  if (change.id == Vxlan::VtiStatusDir::vtiStatusId) handleVtiStatus(change.keyAs<Meshal::IntfId>());
}

void VxlanUnsupportedLogger::handleVtiStatus() {
  Kiln::forEachKey(vtiStatusDir()->vtiStatusColl(),
                   [this](Meshal::IntfId intf, auto const&) { handleVtiStatus(intf); });
}

void VxlanUnsupportedLogger::handleVtiStatus(Meshal::IntfId intf) {
  bool const configured = vtiStatusDir()->vtiStatusHas(intf);
  TRACE(1, " vti: {} configured: {}", intf, configured);
  if (configured && !profileSupportsVxlan()) Kiln::log(vxlanUnsupported);
}

}  // namespace TesselVxlan
