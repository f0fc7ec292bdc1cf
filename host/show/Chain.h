#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <optional>
#include <string_view>
#include <vector>

#include "host/show/NeededRow.h"
#include "platform/asic/Chip.h"
#include "platform/asic/FieldVisitor.h"
#include "platform/meshal/EthAddr.h"

namespace Host {

/// A handle that a row stores, with the name of its field.
struct Link {
  std::string_view field;
  Asic::EntryHandle::PtrConst target;  ///< Never null, and never a don't-care handle.
};

/// The handles that the row behind `handle` stores, in the order of its fields; none of a don't-care handle.
std::vector<Link> linksOf(Asic::EntryHandle const& handle);
/// The values of the row beside its handles: "name=value", without what is 0 or empty. Parts prefix their names.
std::string valuesOf(Asic::EntryHandle const& handle);
/// The number of the first field of that name in the row or its parts; 0 if there is none.
std::uint64_t numberOf(Asic::EntryHandle const& handle, std::string_view field);

/// The MAC address of the next hop that the row refers to; nothing for one that refers to none.
std::optional<Meshal::EthAddr> nextHopMac(Asic::EntryHandle const& handle);

/// The first of `rows`, and of all rows that they lead to, that the chip does not have; null if it has all.
Asic::EntryHandle::PtrConst firstUnwritten(std::vector<NeededRow> const& rows);

/// Tells which rows send packets: those of next hops. The underlay next hop of the broadcast address drops them;
/// tunnels without next hops of their own point to it.
class SendingRows {
 public:
  explicit SendingRows(Asic::Chip const& chip);

  bool has(Asic::RecordBase const& record) const;

 private:
  Asic::StoreBase const* nextHopStore_;
  Asic::StoreBase const* herNextHopStore_;
};

/// Tells for many rows whether the chip has them and all that they lead to; looks once at each row, however many others
/// share it.
///
/// REQUIRES: no table changes during its life.
class WrittenRows {
 public:
  explicit WrittenRows(Asic::Chip const& chip) : sending_(chip) {}

  /// Whether the row exists, the chip has it and every row that it leads to, and, for one that has to send packets, at
  /// least one of these is a next hop that sends them.
  bool has(NeededRow const& row);

 private:
  /// Of a row and all below it.
  struct Verdict {
    bool written;
    bool nextHop;
  };
  Verdict at(Asic::EntryHandle::PtrConst const& handle);

  SendingRows sending_;
  boost::unordered_flat_map<Asic::RecordBase const*, Verdict> known_;
};

}  // namespace Host
