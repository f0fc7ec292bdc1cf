#include "platform/vane/VaneTunnel.h"

#include "platform/kiln/Json.h"

namespace Vane {

void appendText(std::string& out, AdjIdOrNone const& adjId) {
  if (!adjId) {
    out += "none";
  } else {
    Kiln::writeText(out, adjId.value());
  }
}

bool parseText(std::string_view text, AdjIdOrNone& out) {
  std::uint32_t number = 0;
  bool const none = text == "none";
  if (!none && !Kiln::readText(text, number)) return false;
  out = none ? AdjIdOrNone() : AdjIdOrNone(number);
  return true;
}

}  // namespace Vane

template <>
struct Kiln::JsonTraits<Vane::AdjIdOrNone> {
  static void toJson(Vane::AdjIdOrNone const& adjId, JsonOut& out) {
    if (!adjId) return out.null();
    out.number(std::uint64_t{adjId.value()});
  }
  static void fromJson(Vane::AdjIdOrNone& adjId, JsonIn const& in) {
    if (in.isNull()) {
      adjId = {};
      return;
    }
    adjId = Vane::AdjIdOrNone(static_cast<std::uint32_t>(in.unsignedNumber(0, 0xFFFFFFFF)));
  }
};

KILN_VALUE_CODEC(Vane::AdjIdOrNone, "Vane::AdjIdOrNone")
