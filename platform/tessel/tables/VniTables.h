#pragma once

#include "platform/asic/SwTable.h"
#include "platform/tessel/values/TableKeys.h"

namespace TesselVxlan {

struct L2TunnelVnIdEntry : Asic::EntryBase {
  std::uint16_t vfi = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(L2TunnelVnIdEntry, vfi, writeResponse)
};

/// The VFI of packets that carry a VNI.
class L2TunnelVnIdTable final : public Asic::CommittedTable<L2TunnelVnIdTable, L2TunnelVnIdKey, L2TunnelVnIdEntry> {
  ASIC_TABLE(TesselVxlan::L2TunnelVnIdTable)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<L2TunnelVnIdTable> l2TunnelVnIdTableFactory() {
  return Dovel::make<L2TunnelVnIdTable>("L2TunnelVnIdTable");
}

struct EgrVfiToVniMappingEntry : Asic::EntryBase {
  std::uint32_t vni = 0;
  ASIC_ENTRY(EgrVfiToVniMappingEntry, vni)
};

/// The VNI of packets that leave from a VLAN; one table for each logical FAP.
class EgrVfiToVniMappingTable final
    : public Asic::CommittedTable<EgrVfiToVniMappingTable, EgrVfiIndexHash, EgrVfiToVniMappingEntry> {
  ASIC_TABLE(TesselVxlan::EgrVfiToVniMappingTable)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<EgrVfiToVniMappingTable> egrVfiToVniMappingTableFactory() {
  return Dovel::make<EgrVfiToVniMappingTable>("EgrVfiToVniMappingTable");
}

struct EgrAdaptSinglePortGroupEntry : Asic::EntryBase {
  std::uint16_t vfi = 0;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(EgrAdaptSinglePortGroupEntry, vfi, writeResponse)
};

/// VFIs by port group, on chips without a VNI table; one table for each logical FAP.
class EgrAdaptSinglePortGroupTable final
    : public Asic::CommittedTable<EgrAdaptSinglePortGroupTable, EgrAdaptSinglePortGroupKey,
                                  EgrAdaptSinglePortGroupEntry> {
  ASIC_TABLE(TesselVxlan::EgrAdaptSinglePortGroupTable)

 public:
  /// The row of a VFI for the port group of all ports.
  static Key keyOfAllPorts(std::uint16_t vfi) { return {true, 0x1FF, vfi}; }
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<EgrAdaptSinglePortGroupTable> egrAdaptSinglePortGroupTableFactory() {
  return Dovel::make<EgrAdaptSinglePortGroupTable>("EgrAdaptSinglePortGroupTable");
}

struct VxlanV4UnderlayMcastEntry : Asic::EntryBase {
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(VxlanV4UnderlayMcastEntry, writeResponse)
};

/// Multicast routes of the underlay that carry tunnels.
class VxlanV4UnderlayMcastTable final
    : public Asic::CommittedTable<VxlanV4UnderlayMcastTable, VxlanV4UnderlayMcastKey, VxlanV4UnderlayMcastEntry> {
  ASIC_TABLE(TesselVxlan::VxlanV4UnderlayMcastTable)

 public:
  using CommittedTable::CommittedTable;
};
inline Dovel::Ptr<VxlanV4UnderlayMcastTable> vxlanV4UnderlayMcastTableFactory() {
  return Dovel::make<VxlanV4UnderlayMcastTable>("VxlanV4UnderlayMcastTable");
}

}  // namespace TesselVxlan
