#include <algorithm>

#include "platform/kiln/Entity.h"
#include "platform/kiln/Json.h"

namespace Kiln::Impl {

void eachMember(JsonIn const& in, FunctionRef<void(std::string_view, JsonIn const&)> fn) {
  in.eachMember([&](std::string_view name, JsonIn const& value) { fn(name, value); });
}

bool isNull(JsonIn const& in) { return in.isNull(); }

void failKey(JsonIn const& in, std::string_view keyType) {
  in.fail(std::string("expected a key that is a ").append(keyType));
}

[[noreturn]] void failKeyAgain(JsonIn const& in) {
  in.fail("expected each key once: an earlier member has this one in another text");
}

void nullOut(JsonOut& out) { out.null(); }

void textOut(JsonOut& out, std::string_view text) { out.text(text); }

void sortedOut(JsonOut& out, std::vector<std::pair<std::string, void const*>>&& members,
               FunctionRef<void(void const*, JsonOut&)> value) {
  std::sort(members.begin(), members.end());
  out.object();
  for (auto const& [name, object] : members) {
    JsonOut place = out.member(name);
    value(object, place);
  }
}

}  // namespace Kiln::Impl
