#include "platform/vane/TunnelKey.h"

#include "platform/kiln/Json.h"

namespace Vane {

void appendText(std::string& out, TunnelKey const& key) { Kiln::described::appendLabelled(out, key); }

bool parseText(std::string_view text, TunnelKey& out) { return Kiln::described::parseLabelled(text, out); }

}  // namespace Vane

KILN_VALUE_CODEC(Vane::TunnelKey, "Vane::TunnelKey")
