#include "platform/tessel/values/VtepList.h"

#include <set>

namespace TesselVxlan {

void appendText(std::string& out, VtepList const& list) {
  Kiln::writeText(out, std::set<Vane::TunnelKey>(list.tunnelKeyList().begin(), list.tunnelKeyList().end()));
}

}  // namespace TesselVxlan
