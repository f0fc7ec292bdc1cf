#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/asic/SwTable.h"
#include "platform/dovel/Publisher.h"
#include "platform/kiln/Attribute.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/central/CommonData.h"

namespace TesselVxlan {

/// Which of the two views of an egress next-hop row is meant.
enum class EgrL3NextHopTableViewType : std::uint8_t { l3, l3Mc };

/// Common base of the next-hop programmers: what their tables are bound to, and when these are created.
///
/// Main thread only.
class NextHopTableProgrammerBase : public Dovel::PublishingNode {
  KILN_BASE_TYPE(TesselVxlan::NextHopTableProgrammerBase)
  KILN_FIXED(0x102, Dovel::Ptr<Stateway::EntityManager>, statewayEm)
  KILN_FIXED(0x103, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const>, fcsd)

 public:
  using EntryState = Asic::SwTableBase::EntryState;
  using Handle = Asic::SwTableBase::EntryHandle::PtrConst;

  /// Makes the tables and leaves them without entries but the fixed rows. REQUIRES: before every other operation.
  virtual void initTables(TesselCentral::ChipInfo const& chipInfo) = 0;

 protected:
  NextHopTableProgrammerBase(Dovel::Ptr<Stateway::EntityManager> statewayEm,
                             Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd)
      : statewayEm_(std::move(statewayEm)), fcsd_(std::move(fcsd)) {}

  /// Whether the chip refused the last write of the entry of `key`: inserting the same contents then writes them again.
  /// False of an entry that waits for a row, which the table writes by itself.
  template <class Table>
  static bool isRefused(Table const& table, typename Table::Key const& key) {
    return table.state(key) == EntryState::failed;
  }
  /// For traces.
  static std::string handleText(Handle const& handle);
};

}  // namespace TesselVxlan
