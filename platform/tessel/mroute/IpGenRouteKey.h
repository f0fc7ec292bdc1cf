#pragma once

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/meshal/IpGenAddr.h"

namespace Routing::Multicast::Fib {

/// A multicast route: "10.0.0.9, group:232.1.1.1".
struct IpGenRouteKey {
  KILN_FIELD(Meshal::IpGenAddr, source){};
  KILN_FIELD(Meshal::IpGenAddr, group){};

  friend bool operator==(IpGenRouteKey const&, IpGenRouteKey const&) = default;
  friend std::strong_ordering operator<=>(IpGenRouteKey const&, IpGenRouteKey const&) = default;
};
BOOST_DESCRIBE_STRUCT(IpGenRouteKey, (), (source_, group_))
inline std::size_t hash_value(IpGenRouteKey const& key) {
  return Kiln::mix(hash_value(key.source()), hash_value(key.group()));
}
void appendText(std::string& out, IpGenRouteKey const& key);
bool parseText(std::string_view text, IpGenRouteKey& out);
constexpr char const* expectedText(IpGenRouteKey const*) {
  return "a multicast route such as \"10.0.0.9, group:232.1.1.1\"";
}
KILN_VALUE_STREAM(IpGenRouteKey)

}  // namespace Routing::Multicast::Fib

KILN_DECLARE_CODEC(Routing::Multicast::Fib::IpGenRouteKey);
