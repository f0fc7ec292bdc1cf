#include "platform/vane/NextHopEntry.h"

#include "platform/kiln/Json.h"

namespace Vane {

std::string NextHopEntry::stringValue() const { return Kiln::toText(*this); }

}  // namespace Vane

KILN_VALUE_CODEC(Vane::NextHopEntryType, "Vane::NextHopEntryType")
KILN_VALUE_CODEC(Vane::NextHopEntry, "Vane::NextHopEntry")
