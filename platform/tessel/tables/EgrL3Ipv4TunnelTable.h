#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/L3Keys.h"

namespace TesselVxlan {

/// An outer IPv4 header.
struct EgrL3Ipv4TunnelEntry : Asic::EntryBase {
  Meshal::IpGenAddr sip;
  Meshal::IpGenAddr dip;
  std::uint8_t ttl = 0;
  std::uint8_t hdrSelectA = 0;
  bool tunnelEntry = false;
  bool udpSrcPortValid = false;
  std::uint8_t tosBasePtr = 0;          ///< 7 bits.
  std::uint8_t outerDscpFromInner = 0;  ///< 2 bits.
  std::uint8_t hdrSelectB = 0;
  std::uint16_t udpSrcPort = 0;
  std::uint16_t udpDestPort = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(EgrL3Ipv4TunnelEntry, sip, dip, ttl, hdrSelectA, tunnelEntry, udpSrcPortValid, tosBasePtr,
             outerDscpFromInner, hdrSelectB, udpSrcPort, udpDestPort, writeResponse)
};

/// Outer IPv4 headers; row 0 is the default header, written at its place and pinned.
class EgrL3Ipv4TunnelTable final
    : public Asic::RefCountedTable<EgrL3Ipv4TunnelTable, TesselL3Common::EgrL3TunnelKey, EgrL3Ipv4TunnelEntry> {
  ASIC_TABLE(TesselVxlan::EgrL3Ipv4TunnelTable)

 public:
  using RefCountedTable::entryWriteAtIndex;
  using RefCountedTable::RefCountedTable;
  static constexpr std::uint32_t reservedRows = 1;
};
inline Dovel::Ptr<EgrL3Ipv4TunnelTable> egrL3Ipv4TunnelTableFactory() {
  return Dovel::make<EgrL3Ipv4TunnelTable>("EgrL3Ipv4TunnelTable");
}

}  // namespace TesselVxlan
