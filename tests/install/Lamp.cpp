#include "Lamp.h"

#include "platform/asic/TableDefinitions.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("LampSm");

KILN_DESCRIBE(Consumer::Lamp)
KILN_DESCRIBE(Consumer::LampSm)
ASIC_DESCRIBE_TABLE(Consumer::LampTable)

namespace Consumer {

void LampSm::lampDispatch(Dovel::Change const& change) {
  if (change.id == Lamp::brightnessId) handleBrightness();
}

void LampSm::handleBrightness() {
  if (!lamp()) return;
  TRACE(1, "level {}", lamp()->brightness());
  LampEntry entry;
  entry.level = lamp()->brightness();
  table()->entryCommit(1, entry);
}

}  // namespace Consumer
