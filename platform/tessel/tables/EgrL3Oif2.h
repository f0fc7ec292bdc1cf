#pragma once

#include "platform/asic/SwTable.h"

namespace TesselL3Tunnel {

struct EgrL3Oif2Entry : Asic::EntryBase {
  std::uint16_t vlanId = 0;
  ASIC_ENTRY(EgrL3Oif2Entry, vlanId)
};

/// Outgoing interfaces of the underlay, by VLAN number.
class EgrL3Oif2 final : public Asic::RefCountedTable<EgrL3Oif2, std::uint16_t, EgrL3Oif2Entry> {
  ASIC_TABLE(TesselL3Tunnel::EgrL3Oif2)

 public:
  using RefCountedTable::RefCountedTable;
};
inline Dovel::Ptr<EgrL3Oif2> egrL3Oif2Factory() { return Dovel::make<EgrL3Oif2>("EgrL3Oif2"); }

}  // namespace TesselL3Tunnel
