#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"

namespace Vane {

/// The key of a configured tunnel.
///
/// `dst` is the remote VTEP. Keys that differ in `genId` alone are different keys of one tunnel; a later configuration
/// of it bears a larger one. The order is the one of the members. An aggregate: `TunnelKey{src, dst, vrf, genId,
/// intfId}`. Its text is "SRC, dst:DST, vrf:V, genId:G, intfId:I".
struct TunnelKey {
  KILN_FIELD(Meshal::IpGenAddr, src){};
  KILN_FIELD(Meshal::IpGenAddr, dst){};
  KILN_FIELD(std::uint32_t, vrf) = 0;
  KILN_FIELD(std::uint64_t, genId) = 0;
  KILN_FIELD(Meshal::IntfId, intfId){};

  friend bool operator==(TunnelKey const&, TunnelKey const&) = default;
  friend std::strong_ordering operator<=>(TunnelKey const&, TunnelKey const&) = default;
};
BOOST_DESCRIBE_STRUCT(TunnelKey, (), (src_, dst_, vrf_, genId_, intfId_))

inline std::size_t hash_value(TunnelKey const& key) {
  // Keys of one table differ in `dst` or in `genId`, hardly ever in the rest alone.
  auto const rest = std::uint64_t{key.vrf()} << 32 | key.intfId().id();
  return Kiln::mix(hash_value(key.dst()) + key.genId(), key.src().u64(0) + key.src().u64(1) + rest);
}
void appendText(std::string& out, TunnelKey const& key);
bool parseText(std::string_view text, TunnelKey& out);
constexpr char const* expectedText(TunnelKey const*) {
  return "a tunnel key \"SRC, dst:DST, vrf:V, genId:G, intfId:I\"";
}
KILN_VALUE_STREAM(TunnelKey)

}  // namespace Vane

KILN_DECLARE_CODEC(Vane::TunnelKey);
