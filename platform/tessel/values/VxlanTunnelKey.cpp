#include "platform/tessel/values/VxlanTunnelKey.h"

#include "platform/kiln/Json.h"

namespace TesselL3Common {

VxlanTunnelKey::VxlanTunnelKey(Meshal::IntfId intfId, Meshal::IpGenAddr const& srcIp, std::uint16_t udpDestPort,
                               bool udpSrcPortValid, std::uint16_t udpSrcPort, std::uint8_t ttl)
    : intfId_(intfId),
      srcIp_(srcIp),
      udpDestPort_(udpDestPort),
      udpSrcPortValid_(udpSrcPortValid),
      udpSrcPort_(udpSrcPort),
      ttl_(ttl) {
  if (ttl < minTtl || ttl > maxTtl) {
    Kiln::throwRangeException("TesselL3Common::VxlanTunnelKey::ttl < 1 or > 64 not allowed");
  }
}

void appendText(std::string& out, VxlanTunnelKey const& key) { Kiln::described::appendLabelled(out, key); }

bool parseText(std::string_view text, VxlanTunnelKey& out) {
  VxlanTunnelKey key;
  if (!Kiln::described::parseLabelled(text, key)) return false;
  if (key.ttl_ < VxlanTunnelKey::minTtl || key.ttl_ > VxlanTunnelKey::maxTtl) return false;
  out = key;
  return true;
}

}  // namespace TesselL3Common

KILN_VALUE_CODEC(TesselL3Common::VxlanTunnelKey, "TesselL3Common::VxlanTunnelKey")
