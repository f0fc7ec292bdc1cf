#include "platform/vane/HwTunnel.h"

#include "platform/kiln/Json.h"

namespace Vane {

NextHopEntryList::NextHopEntryList(std::uint32_t adjId, NextHopEntrySet nextHopEntry)
    : adjId_(adjId), nextHopEntry_(std::move(nextHopEntry)) {
  static std::uint64_t last = 0;
  serial_ = ++last;
}

void appendText(std::string& out, HwNextHopStatusEntry const& entry) {
  out += "{hwNextHopId=";
  Kiln::writeText(out, entry.hwNextHopId());
  if (auto const& list = entry.nextHopEntryList()) {
    out += ",adjId=";
    Kiln::writeText(out, list->adjId());
  }
  out += '}';
}

}  // namespace Vane

template <>
struct Kiln::JsonTraits<Vane::HwNextHopStatusEntry> {
  static void toJson(Vane::HwNextHopStatusEntry const& entry, JsonOut& out) {
    out.object();
    writeJson(entry.hwNextHopId(), out.member("hwNextHopId"));
    if (auto const& list = entry.nextHopEntryList()) writeJson(list->adjId(), out.member("adjId"));
  }
  static void fromJson(Vane::HwNextHopStatusEntry&, JsonIn const& in) {
    in.fail("expected nothing: only the feature writes the status of a next hop");
  }
};

KILN_VALUE_CODEC(Vane::HwNextHopStatusEntry, "Vane::HwNextHopStatusEntry")
