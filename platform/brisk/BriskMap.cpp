#include "platform/brisk/BriskMap.h"

#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("BriskMap");

namespace Brisk {

void BriskMapBase::doCorruptionDetected(std::string const& what) {
  TRACE(0, "{} is corrupted: {}", name(), what);
  corruptionDetectedIs(what);
}

void BriskMapBase::checkMemory() const {
  if (!corruption().empty()) throw CorruptionException(corruption());
}

}  // namespace Brisk
