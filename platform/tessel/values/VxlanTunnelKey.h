#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/meshal/IntfId.h"
#include "platform/meshal/IpGenAddr.h"

namespace TesselL3Common {

/// The outer header of a tunnel, without its destination.
///
/// Immutable. Its text is "INTF, srcIp:A, udpDestPort:P, udpSrcPortValid:B, udpSrcPort:P, ttl:T".
class VxlanTunnelKey {
 public:
  static constexpr std::uint8_t minTtl = 1;
  static constexpr std::uint8_t maxTtl = 64;

  /// No interface, no address, no ports, the largest `ttl`.
  VxlanTunnelKey() = default;
  /// Throws `RangeException` "TesselL3Common::VxlanTunnelKey::ttl < 1 or > 64 not allowed".
  VxlanTunnelKey(Meshal::IntfId intfId, Meshal::IpGenAddr const& srcIp, std::uint16_t udpDestPort, bool udpSrcPortValid,
                 std::uint16_t udpSrcPort, std::uint8_t ttl);

  Meshal::IntfId intfId() const { return intfId_; }
  Meshal::IpGenAddr const& srcIp() const { return srcIp_; }
  std::uint16_t udpDestPort() const { return udpDestPort_; }
  bool udpSrcPortValid() const { return udpSrcPortValid_; }
  std::uint16_t udpSrcPort() const { return udpSrcPort_; }
  std::uint8_t ttl() const { return ttl_; }

  friend bool parseText(std::string_view text, VxlanTunnelKey& out);

 private:
  Meshal::IntfId intfId_;
  Meshal::IpGenAddr srcIp_;
  std::uint16_t udpDestPort_ = 0;
  bool udpSrcPortValid_ = false;
  std::uint16_t udpSrcPort_ = 0;
  std::uint8_t ttl_ = maxTtl;

  BOOST_DESCRIBE_CLASS(VxlanTunnelKey, (), (), (), (intfId_, srcIp_, udpDestPort_, udpSrcPortValid_, udpSrcPort_, ttl_))
};
KILN_VALUE_COMPARE(VxlanTunnelKey)
KILN_VALUE_HASH(VxlanTunnelKey)
void appendText(std::string& out, VxlanTunnelKey const& key);
bool parseText(std::string_view text, VxlanTunnelKey& out);
constexpr char const* expectedText(VxlanTunnelKey const*) {
  return "an outer header \"INTF, srcIp:A, udpDestPort:P, udpSrcPortValid:B, udpSrcPort:P, ttl:T\"";
}
KILN_VALUE_STREAM(VxlanTunnelKey)

}  // namespace TesselL3Common

KILN_DECLARE_CODEC(TesselL3Common::VxlanTunnelKey);
