#include "TesselVxlan/frame/TesselVxlanVaulterPStoreHelper.h"

#include <string>

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"

KILN_TRACE_FILE("TesselVxlanVaulterPStoreHelper");

namespace TesselVxlan {

using Meshal::IpGenAddr;
using rapidjson::Value;
using Vane::VaneNextHopId;
using Vane::VaneTunnelId;

namespace {

template <class Id>
Id idOf(Value const& name) {
  return Id(static_cast<std::uint32_t>(std::stoi(std::string(name.GetString(), name.GetStringLength()))));
}

IpGenAddr addressOf(Value const& text) { return IpGenAddr({text.GetString(), text.GetStringLength()}); }

/// Calls `restore(name, value)` for each member of an object's member, which may be missing.
template <class Restore>
void forEachMember(Value const& value, char const* section, Restore&& restore) {
  auto const found = value.FindMember(section);
  if (found == value.MemberEnd()) return;
  INVARIANT(found->value.IsObject());
  for (auto const& member : found->value.GetObject()) restore(member.name, member.value);
}

}  // namespace

void TesselVxlanVaulterPStoreHelper::doRestore(Value const& value) {
  TRACE(0, "doRestore");
  INVARIANT(value.IsObject());
  forEachMember(value, "vxlanVpVtepMap", [this](Value const& name, Value const& address) {
    INVARIANT(address.GetType() == rapidjson::kStringType);
    auto const id = idOf<VaneTunnelId>(name);
    auto const vtepIp = addressOf(address);
    TRACE_IN("doRestore", 1, "Restored Vp: {} to VtepIp: {}", id, vtepIp);
    vxlanToL2State()->recoveredTnlIdToVtepIs(id, vtepIp);
  });
  forEachMember(value, "vxlanNhIdVtepMap", [this](Value const& name, Value const& address) {
    INVARIANT(address.GetType() == rapidjson::kStringType);
    auto const id = idOf<VaneNextHopId>(name);
    auto const vtepIp = addressOf(address);
    TRACE_IN("doRestore", 1, "Restored NhId: {} to VtepIp: {}", id, vtepIp);
    vxlanToL2State()->recoveredNhIdToVtepIs(id, vtepIp);
  });
  forEachMember(value, "mhTnlIdVtepList", [this](Value const& name, Value const& addresses) {
    INVARIANT(addresses.GetType() == rapidjson::kArrayType);
    auto const id = idOf<VaneTunnelId>(name);
    vxlanToL2State()->recoveredMHTnlIdToVtepListDel(id);
    auto const list = vxlanToL2State()->recoveredMHTnlIdToVtepListIs(id);
    for (auto const& address : addresses.GetArray()) {
      auto const vtepIp = addressOf(address);
      TRACE_IN("doRestore", 1, "Restored MH tunnelId: {} to MH vtep: {}", id, vtepIp);
      list->activeVtepListIs(vtepIp);
    }
  });
}

}  // namespace TesselVxlan
