#include "platform/vane/VaneHelperVni.h"

#include "platform/kiln/Json.h"

namespace Vane::VXLAN {

void appendText(std::string& out, VtiVlanKey const& key) { Kiln::described::appendLabelled(out, key); }
bool parseText(std::string_view text, VtiVlanKey& out) { return Kiln::described::parseLabelled(text, out); }

void appendText(std::string& out, VtiVniKey const& key) { Kiln::described::appendLabelled(out, key); }
bool parseText(std::string_view text, VtiVniKey& out) { return Kiln::described::parseLabelled(text, out); }

}  // namespace Vane::VXLAN

namespace VaneHelper {

VaneHelperVni::VaneHelperVni(Dovel::String name)
    : NamedEntity(std::move(name)),
      helperVniConfig_(Dovel::make<VaneHelperVniConfig>("helperVniConfig")),
      helperVniStatus_(Dovel::make<VaneHelperVniStatus>("helperVniStatus")) {}

}  // namespace VaneHelper

KILN_VALUE_CODEC(Vane::VXLAN::VtiVlanKey, "Vane::VXLAN::VtiVlanKey")
KILN_VALUE_CODEC(Vane::VXLAN::VtiVniKey, "Vane::VXLAN::VtiVniKey")
KILN_VALUE_CODEC(VaneHelper::VaneHelperVniConfigEntry, "VaneHelper::VaneHelperVniConfigEntry")
KILN_VALUE_CODEC(VaneHelper::VaneHelperVniStatusEntry, "VaneHelper::VaneHelperVniStatusEntry")
