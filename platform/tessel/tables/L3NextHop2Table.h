#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/L3Keys.h"

namespace TesselL3Common {

/// Ingress part of an underlay next hop: the port or group that it leaves by.
class IngL3NextHop2Table final : public Asic::PartTable<IngL3NextHop2Table> {
  ASIC_TABLE(TesselL3Common::IngL3NextHop2Table)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    Asic::EntryHandle::PtrConst destinationHandle;
    std::uint16_t destinationPortA = 0;
    std::uint8_t destinationKind = 0;
    std::uint8_t ingressViewCode = 0;
    std::uint16_t destination = 0;
    std::uint8_t isLag = 0;
    std::uint16_t vlanId = 0;
    ASIC_ENTRY(Entry, destinationHandle, destinationPortA, destinationKind, ingressViewCode, destination, isLag, vlanId)
  };
};

/// Egress part of an underlay next hop: its MAC and outgoing interface.
class EgrL3NextHop2 final : public Asic::PartTable<EgrL3NextHop2> {
  ASIC_TABLE(TesselL3Common::EgrL3NextHop2)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    Asic::EntryHandle::PtrConst l3Oif2Handle;
    std::uint16_t reservedWord = 0;
    Meshal::EthAddr macAddr;
    std::uint8_t egressViewCode = 0;
    ASIC_ENTRY(Entry, l3Oif2Handle, reservedWord, macAddr, egressViewCode)
  };
};

struct L3NextHop2Entry : Asic::EntryBase {
  IngL3NextHop2Table::Entry ingress;
  EgrL3NextHop2::Entry egress;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(L3NextHop2Entry, ingress, egress, writeResponse)
};

/// Underlay next hops. Row 0 is reserved; it and the drop row are pinned, all others exist while they are referenced.
class L3NextHop2Table final : public Asic::RefCountedTable<L3NextHop2Table, L3NextHop2Key, L3NextHop2Entry> {
  ASIC_TABLE(TesselL3Common::L3NextHop2Table)

 public:
  using RefCountedTable::entryCommit;
  using RefCountedTable::entryWriteAtIndex;
  using RefCountedTable::RefCountedTable;
  static constexpr std::uint32_t reservedRows = 1;
  using Parts = boost::mp11::mp_list<IngL3NextHop2Table, EgrL3NextHop2>;

  IngL3NextHop2Table::Entry const& ingL3NextHop2TableEntry(Key const& key) const { return entry(key).ingress; }
  EgrL3NextHop2::Entry const& egrL3NextHop2Entry(Key const& key) const { return entry(key).egress; }
};
inline Dovel::Ptr<L3NextHop2Table> l3NextHop2TableFactory() { return Dovel::make<L3NextHop2Table>("L3NextHop2Table"); }

}  // namespace TesselL3Common
