#pragma once

#include "platform/asic/SwTable.h"
#include "platform/meshal/IpGenAddr.h"

namespace TesselL3Common {

/// First part of a virtual port: how packets from it are treated.
class VirtualPort1Table final : public Asic::PartTable<VirtualPort1Table> {
  ASIC_TABLE(TesselL3Common::VirtualPort1Table)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    std::uint8_t vp1FlagA = 0;
    std::uint8_t vp1FlagB = 0;
    std::uint8_t learnEnableA = 0;
    std::uint8_t learnEnableB = 0;
    std::uint8_t vp1FlagC = 0;
    std::uint8_t vp1FlagD = 0;
    std::uint8_t defaultLearnEnable = 0;
    std::uint32_t vp1UpdateCount = 0;
    std::uint8_t vpClassCode = 0;  ///< 4 bits.
    std::uint8_t vp1FlagE = 0;
    std::uint8_t capabilityFlag = 0;
    std::uint8_t vp1FlagF = 0;
    std::uint8_t vp1FlagG = 0;
    std::uint8_t sbrCodeA = 0;
    std::uint8_t vp1FlagH = 0;
    ASIC_ENTRY(Entry, vp1FlagA, vp1FlagB, learnEnableA, learnEnableB, vp1FlagC, vp1FlagD, defaultLearnEnable,
               vp1UpdateCount, vpClassCode, vp1FlagE, capabilityFlag, vp1FlagF, vp1FlagG, sbrCodeA, vp1FlagH)
  };
};

/// Second part of a virtual port: the header that packets to it get.
class VirtualPort2Table final : public Asic::PartTable<VirtualPort2Table> {
  ASIC_TABLE(TesselL3Common::VirtualPort2Table)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    Asic::EntryHandle::PtrConst egrL3TunnelTableHandle;
    Asic::FilledByTable<std::uint16_t> tunnelIndex;  ///< The row of the header.
    std::uint64_t vtepIpBits = 0;
    std::uint8_t sbrCodeB = 0;
    std::uint8_t vp2FlagA = 0;
    std::uint8_t vp2FlagB = 0;
    std::uint8_t vp2FlagC = 0;
    std::uint8_t vp2FlagD = 0;
    std::uint8_t vp2FlagE = 0;
    std::uint32_t vp2UpdateCount = 0;
    std::uint8_t vp2CodeA = 0;
    std::uint8_t vp2FlagF = 0;
    std::uint8_t sbrCodeC = 0;
    ASIC_ENTRY(Entry, egrL3TunnelTableHandle, tunnelIndex, vtepIpBits, sbrCodeB, vp2FlagA, vp2FlagB, vp2FlagC, vp2FlagD,
               vp2FlagE, vp2UpdateCount, vp2CodeA, vp2FlagF, sbrCodeC)
  };
};

struct VirtualPortEntry : Asic::EntryBase {
  VirtualPort1Table::Entry vp1;
  VirtualPort2Table::Entry vp2;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(VirtualPortEntry, vp1, vp2, writeResponse)
};

/// Virtual ports by remote VTEP; the row is the tunnel id. Rows 0 and 1 are default rows.
class VirtualPortTableMerged final
    : public Asic::CommittedTable<VirtualPortTableMerged, Meshal::IpGenAddr, VirtualPortEntry> {
  ASIC_TABLE(TesselL3Common::VirtualPortTableMerged)

 public:
  using CommittedTable::CommittedTable;
  static constexpr std::uint32_t reservedRows = 2;
  using Parts = boost::mp11::mp_list<VirtualPort1Table, VirtualPort2Table>;

  VirtualPort1Table::Entry const& virtualPort1TableEntry(Key const& key) const { return entry(key).vp1; }
  VirtualPort2Table::Entry const& virtualPort2TableEntry(Key const& key) const { return entry(key).vp2; }

  /// The tunnel index is the row of the header's entry, 0 while it has none.
  static void fill(Entry& entry) { entry.vp2.tunnelIndex = Asic::rowNumber16(entry.vp2.egrL3TunnelTableHandle); }
};
inline Dovel::Ptr<VirtualPortTableMerged> virtualPortTableMergedFactory() {
  return Dovel::make<VirtualPortTableMerged>("VirtualPortTableMerged");
}

}  // namespace TesselL3Common
