#include "platform/vxlan/Vni.h"

#include "platform/kiln/Json.h"

namespace Vxlan {

void appendText(std::string& out, VniExtOrNone const& vni) {
  if (vni.isNone()) {
    out += "none";
  } else {
    Kiln::writeText(out, vni.value());
  }
}

bool parseText(std::string_view text, VniExtOrNone& out) {
  VniExt vni;
  if (text == "none") {
    out = VniExtOrNone::none();
  } else if (Kiln::readText(text, vni)) {
    out = vni;
  } else {
    return false;
  }
  return true;
}

}  // namespace Vxlan

KILN_VALUE_CODEC(Vxlan::VniExt, "Vxlan::VniExt")
KILN_VALUE_CODEC(Vxlan::VniExtOrNone, "Vxlan::VniExtOrNone")
