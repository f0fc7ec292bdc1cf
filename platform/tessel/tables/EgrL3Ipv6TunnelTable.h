#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/L3Keys.h"

namespace TesselVxlan {

/// An outer IPv6 header.
struct EgrL3Ipv6TunnelEntry : Asic::EntryBase {
  Meshal::IpGenAddr sip;
  std::uint8_t outerDscpFromInner = 0;  ///< 2 bits.
  std::uint8_t hdrSelectA = 0;
  std::uint8_t tosBasePtr = 0;  ///< 7 bits.
  std::uint8_t ttl = 0;
  Meshal::IpGenAddr dip;
  std::uint8_t hdrSelectB = 0;
  std::uint16_t udpDestPort = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(EgrL3Ipv6TunnelEntry, sip, outerDscpFromInner, hdrSelectA, tosBasePtr, ttl, dip, hdrSelectB, udpDestPort,
             writeResponse)
};

/// Outer IPv6 headers.
class EgrL3Ipv6TunnelTable final
    : public Asic::RefCountedTable<EgrL3Ipv6TunnelTable, TesselL3Common::EgrL3Ipv6TunnelKey, EgrL3Ipv6TunnelEntry> {
  ASIC_TABLE(TesselVxlan::EgrL3Ipv6TunnelTable)

 public:
  using RefCountedTable::RefCountedTable;
};
inline Dovel::Ptr<EgrL3Ipv6TunnelTable> egrL3Ipv6TunnelTableFactory() {
  return Dovel::make<EgrL3Ipv6TunnelTable>("EgrL3Ipv6TunnelTable");
}

}  // namespace TesselVxlan
