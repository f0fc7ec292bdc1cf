#pragma once

#include "platform/anvil/PerUnitBitmap.h"
#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TableKeys.h"

namespace TesselVxlan {

/// An address on which tunnels end.
struct L2TunnelDipEntry : Asic::EntryBase {
  std::uint16_t allowedPortsProfileIndex = 0;
  bool useOuterHeaderPhb = false;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(L2TunnelDipEntry, allowedPortsProfileIndex, useOuterHeaderPhb, writeResponse)
};

/// IPv4 addresses on which tunnels end.
class L2TunnelIpv4DipTable final
    : public Asic::CommittedTable<L2TunnelIpv4DipTable, L2TunnelIpv4Key, L2TunnelDipEntry> {
  ASIC_TABLE(TesselVxlan::L2TunnelIpv4DipTable)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<L2TunnelIpv4DipTable> l2TunnelIpv4DipTableFactory() {
  return Dovel::make<L2TunnelIpv4DipTable>("L2TunnelIpv4DipTable");
}

/// IPv6 addresses on which tunnels end.
class L2TunnelIpv6DipTable final
    : public Asic::CommittedTable<L2TunnelIpv6DipTable, L2TunnelIpv6Key, L2TunnelDipEntry> {
  ASIC_TABLE(TesselVxlan::L2TunnelIpv6DipTable)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<L2TunnelIpv6DipTable> l2TunnelIpv6DipTableFactory() {
  return Dovel::make<L2TunnelIpv6DipTable>("L2TunnelIpv6DipTable");
}

/// A remote VTEP and the source virtual port of its packets.
struct L2TunnelSipEntry : Asic::EntryBase {
  Asic::EntryHandle::PtrConst svpHandle;
  Asic::FilledByTable<std::uint16_t> svp;  ///< The row of the virtual port.
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(L2TunnelSipEntry, svpHandle, svp, writeResponse)
};

/// Remote VTEPs with an IPv4 address.
class L2TunnelIpv4SipTable final
    : public Asic::CommittedTable<L2TunnelIpv4SipTable, L2TunnelIpv4Key, L2TunnelSipEntry> {
  ASIC_TABLE(TesselVxlan::L2TunnelIpv4SipTable)

 public:
  using CommittedTable::CommittedTable;

  /// The source virtual port is the row of its entry, 0 while it has none.
  static void fill(Entry& entry) { entry.svp = Asic::rowNumber16(entry.svpHandle); }
};
inline Dovel::Ptr<L2TunnelIpv4SipTable> l2TunnelIpv4SipTableFactory() {
  return Dovel::make<L2TunnelIpv4SipTable>("L2TunnelIpv4SipTable");
}

/// Remote VTEPs with an IPv6 address.
class L2TunnelIpv6SipTable final
    : public Asic::CommittedTable<L2TunnelIpv6SipTable, L2TunnelIpv6Key, L2TunnelSipEntry> {
  ASIC_TABLE(TesselVxlan::L2TunnelIpv6SipTable)

 public:
  using CommittedTable::CommittedTable;

  /// The source virtual port is the row of its entry, 0 while it has none.
  static void fill(Entry& entry) { entry.svp = Asic::rowNumber16(entry.svpHandle); }
};
inline Dovel::Ptr<L2TunnelIpv6SipTable> l2TunnelIpv6SipTableFactory() {
  return Dovel::make<L2TunnelIpv6SipTable>("L2TunnelIpv6SipTable");
}

struct AllowedPortBitmapProfileEntry : Asic::EntryBase {
  Anvil::PerUnitBitmap ports;
  ASIC_ENTRY(AllowedPortBitmapProfileEntry, ports)
};

/// Sets of ports on which tunnels may end.
class AllowedPortBitmapProfile final
    : public Asic::IndexTable<AllowedPortBitmapProfile, AllowedPortBitmapProfileEntry> {
  ASIC_TABLE(TesselVxlan::AllowedPortBitmapProfile)

 public:
  using IndexTable::IndexTable;
};
inline Dovel::Ptr<AllowedPortBitmapProfile> allowedPortBitmapProfileFactory() {
  return Dovel::make<AllowedPortBitmapProfile>("AllowedPortBitmapProfile");
}

}  // namespace TesselVxlan
