#pragma once

#include "platform/dovel/Factory.h"
#include "platform/dovel/Publisher.h"
#include "platform/kiln/Attribute.h"
#include "platform/meshal/Bounded.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/tessel/central/VxlanToL2State.h"
#include "platform/tessel/features/TesselChipAttributesVxlan.h"
#include "platform/tessel/features/TesselSbrAttributes.h"
#include "platform/tessel/l3common/VxlanDirs.h"
#include "platform/tessel/tables/RL2TunnelDefaultNetworkSvp.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"
#include "platform/vane/TunnelKey.h"
#include "platform/vane/TunnelType.h"

namespace TesselVxlan {

/// Keeps one virtual port per remote VTEP in `VirtualPortTableMerged`, and the two default rows below them.
///
/// Reads its arguments and the chip's codes. Writes the port's row, the two maps from chip numbers back to VTEPs and,
/// when the chip answers, `tnlIdEntryStatus` then `tnlId` of the VTEP's map: the order is the contract, watchers run
/// inside the second write. The tunnel id is the port's row, so a VTEP has a usable one only once its port is written.
/// `tnlIdEntryStatus` becomes done at each write that succeeds, failed at each that does not; one can follow the other.
/// Main thread only. A write response may arrive after its tunnel was removed; it looks the VTEP's map up again by
/// address. The rows remain until they are deleted; the maps are shared. The table holds a reference to this object
/// until it has written.
class VirtualPortProgrammer final : public Dovel::PublishingNode {
  KILN_BASE_TYPE(TesselVxlan::VirtualPortProgrammer)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)
  KILN_FIXED(0x104, Dovel::Ptr<TesselCentral::VxlanToL2State>, vxlanToL2State)
  KILN_FIXED(0x105, Dovel::Ptr<TesselCentral::VxlanCapabilities const>, vxlanCapabilities)  ///< May be null.
  KILN_ATTR(0x106, Dovel::Ptr<TesselVxlan::TesselChipAttributesVxlan const>, tesselVxlanChipAttr)
  KILN_FIXED(0x107, Dovel::Ptr<TesselL3Common::VxlanDvpToVtepMap>, dvpToVtepMapping)
  KILN_FIXED(0x108, Dovel::Ptr<TesselL3Common::VxlanTunnelIndexToVtepMap>, tunnelIndexToVtepMapping)
  KILN_ATTR(0x109, Dovel::Ptr<TesselL3Common::VirtualPortTableMerged>, virtualPortTable)
  KILN_ATTR(0x10a, Dovel::Ptr<TesselVxlan::RL2TunnelDefaultNetworkSvp>,
            rL2TunnelDefaultNetworkSvp)  ///< Null if the chip has none.
  KILN_ATTR(0x10b, Dovel::Ptr<TesselTile::TesselSbrAttributes const>, sbrAttributes)

 public:
  using EntryState = Asic::SwTableBase::EntryState;
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;

  VirtualPortProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                        Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
                        Dovel::Ptr<TesselCentral::VxlanToL2State> vxlanToL2State,
                        Dovel::Ptr<TesselCentral::VxlanCapabilities const> vxlanCapabilities,
                        Dovel::Ptr<TesselL3Common::VxlanDvpToVtepMap> dvpToVtepMapping,
                        Dovel::Ptr<TesselL3Common::VxlanTunnelIndexToVtepMap> tunnelIndexToVtepMapping);

  /// Empties the port table and, where the chip has default network ports, creates their table.
  /// REQUIRES: `virtualPortTable` is set and bound.
  void initTables(TesselCentral::ChipInfo const& chipInfo);

  /// Writes rows 0 and 1 and maps DVP 1 to 0.0.0.0. Throws the range exception of `U4` for a class code beyond it.
  void insertDefaultEntries(bool dataPathLearning, Handle const& egrL3TunnelTableHandle);
  void insertDefault0Entry(bool dataPathLearning, Handle const& egrL3TunnelTableHandle);
  void insertDefault1Entry(bool dataPathLearning, Handle const& egrL3TunnelTableHandle);
  /// Removes row 1. Row 0 and the mapping of DVP 1 stay.
  void deleteDefaultEntry();

  /// The port of `addr`, written anew each time: the update counts of its row always change. Publishes, in order: the
  /// status and the id where the chip has answered already, the DVP's mapping, the tunnel index's.
  /// Never null. Throws the range exception of `U4` for a class code beyond it.
  /// REQUIRES: `addr` has a map in `vxlanToL2State`.
  Handle insertEntry(Vane::TunnelKey const& tunnelKey, Vane::TunnelType tunnelType, Meshal::IpGenAddr const& addr,
                     bool dataPathLearning, Handle const& egrL3TunnelTableHandle);
  /// Removes the port and its DVP's mapping. The mapping of the tunnel index stays.
  void deleteEntry(Vane::TunnelKey const& tunnelKey, Meshal::IpGenAddr const& addr);
  /// A weak handle; null if `addr` has no port.
  Handle getEntry(Meshal::IpGenAddr const& addr) const;
  /// The outer header that the port of `addr` holds; null if `addr` has no port.
  Handle const& egrL3TunnelTableHandle(Meshal::IpGenAddr const& addr) const;

 private:
  struct Response;

  TesselL3Common::VirtualPortTableMerged::Entry tunnelRow(Meshal::IpGenAddr const& addr, bool dataPathLearning,
                                                          Handle const& egrL3TunnelTableHandle) const;
  void respond(Meshal::IpGenAddr const& addr, EntryState state) const;
  void written(TesselCentral::VtepIpToTnlIdNhIdMap& map) const;
  void failed(TesselCentral::VtepIpToTnlIdNhIdMap& map, EntryState state) const;
  /// Maps the numbers of the port back to it, where it has a row.
  void reverseMapsIs(Meshal::IpGenAddr const& addr) const;
  U4 vpClassCode() const;
  bool capabilityFlag() const;

  /// The chip's codes in tunnel rows.
  struct Codes {
    TesselTile::TesselSbrAttributes const* of = nullptr;
    std::uint8_t b = 0;
    std::uint8_t aAndC = 0;
  };
  /// Read again only when `sbrAttributes` is another object.
  Codes const& tunnelCodes() const;

  mutable Codes tunnelCodes_;
};

inline constexpr Dovel::Factory<VirtualPortProgrammer> virtualPortProgrammerFactory;

}  // namespace TesselVxlan
