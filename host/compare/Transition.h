#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/show/Chain.h"
#include "host/show/Report.h"

namespace Host {

/// A tunnel that lost traffic while the chip was written.
struct Interruption {
  Vane::TunnelType type;
  Meshal::IpGenAddr vtep;
  std::uint64_t from = 0;    ///< The write after which its way was broken first, from 1 on.
  std::uint64_t writes = 0;  ///< After how many writes it was.
  bool lasts = false;        ///< Still broken after the last write.
};

/// Follows row by row what an agent writes from one settled state to another, and says which tunnels lose traffic.
///
/// A tunnel's way are the rows that it needs (`RowFinder::needed`), with all that these lead to. It is whole while the
/// chip has every row of it and, where it has to send packets, one that sends them. The tunnel carries traffic after a
/// write if its way is whole from the rows that it needed before the transition, or from those that it needs after it.
/// Tunnels count that carried traffic before and are still wanted afterwards. Frames on the way through the chip while
/// it is written are not modelled. Main thread only.
class Transition final : private Asic::RowObserver {
 public:
  /// Takes the present state. REQUIRES: settled; the agent outlives this, and its feature is not stopped meanwhile.
  explicit Transition(Agent& agent);
  ~Transition();
  Transition(Transition const&) = delete;
  Transition& operator=(Transition const&) = delete;

  /// Rows that were written or cleared since.
  std::uint64_t writes() const { return events_.size(); }
  /// By type and VTEP. REQUIRES: settled, called once.
  std::vector<Interruption> interruptions();

 private:
  class Ways;
  /// A row of a table: the store's number above, the row below.
  using RowId = std::uint64_t;
  struct Contents {
    std::vector<RowId> links;
    bool sends = false;
    bool written = true;
  };
  struct Event {
    RowId row;
    Contents contents;
  };
  struct Way {
    Vane::TunnelType type;
    Meshal::IpGenAddr vtep;
    std::vector<std::pair<RowId, bool>> tops;  ///< With whether the row has to lead to one that sends.
  };

  void written(std::string_view table, std::uint32_t row, Asic::EntryHandle const& entry) override;
  void cleared(std::string_view table, std::uint32_t row) override;
  std::uint64_t storeNumber(Asic::StoreBase const& store) const;
  RowId rowId(Asic::RecordBase const& record) const;
  Contents contentsOf(Asic::EntryHandle const& entry, std::uint32_t row) const;
  std::vector<Way> ways() const;

  Agent& agent_;
  std::vector<Asic::StoreBase const*> stores_;
  SendingRows sending_;
  boost::unordered_flat_map<std::string, std::uint64_t> storeOf_;  ///< Numbers by the chip's tables.
  boost::unordered_flat_map<RowId, Contents> rows_;
  std::vector<Way> before_;
  std::vector<Event> events_;
};

}  // namespace Host
