#pragma once

#include "platform/dovel/Factory.h"
#include "platform/dovel/Publisher.h"
#include "platform/kiln/Attribute.h"
#include "platform/kiln/Dir.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"
#include "platform/tessel/tables/VxlanEgrL3Oif1Table.h"

namespace TesselVxlan {

/// Owns the small egress table with one outgoing-interface record for each kind of encapsulation.
///
/// Reads the chip's attributes once, in `initTables`. Only writer of `VxlanEgrL3Oif1Table`.
/// Main thread only.
/// The records belong to the next hops that hold their handles; this object holds the table alone.
class VxlanL3Oif1TableProgrammer final : public Dovel::PublishingNode {
  KILN_BASE_TYPE(TesselVxlan::VxlanL3Oif1TableProgrammer)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)
  KILN_ATTR(0x104, Dovel::Ptr<TesselVxlan::VxlanEgrL3Oif1Table>, vxlanEgrL3Oif1Table)  ///< Null if the chip has none.
  KILN_ATTR(0x105, Dovel::Ptr<Kiln::Dir>, mountPath)  ///< Shown only: the table is not made in a directory.

 public:
  VxlanL3Oif1TableProgrammer(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                             Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd);

  /// Makes and empties the table where the chip has it. REQUIRES: once, before any `insertEntry`.
  void initTables(TesselCentral::ChipInfo const& chipInfo);

  /// A use of the record of `key`: 0 for the overlay chain, 1 for the HER chain. Never null.
  /// REQUIRES: the chip has the table.
  Asic::SwTableBase::EntryHandle::PtrConst insertEntry(TunnelType key);
};

inline constexpr Dovel::Factory<VxlanL3Oif1TableProgrammer> vxlanL3Oif1TableProgrammerFactory;

}  // namespace TesselVxlan
