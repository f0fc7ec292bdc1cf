#include "platform/vane/HerVtep.h"

#include "platform/kiln/Json.h"

namespace Vane::VXLAN {

void appendText(std::string& out, VlanInfo const&) { out += "{}"; }

}  // namespace Vane::VXLAN

template <>
struct Kiln::JsonTraits<Vane::VXLAN::VlanInfo> {
  static void toJson(Vane::VXLAN::VlanInfo const&, JsonOut& out) { out.object(); }
  static void fromJson(Vane::VXLAN::VlanInfo&, JsonIn const& in) {
    if (!in.isObject()) in.fail("expected an object");
  }
};

KILN_VALUE_CODEC(Vane::VXLAN::VlanInfo, "Vane::VXLAN::VlanInfo")
