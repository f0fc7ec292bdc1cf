#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <string_view>
#include <vector>

#include "platform/asic/Chip.h"
#include "platform/asic/FieldVisitor.h"
#include "platform/meshal/IpGenAddr.h"

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

/// The rows that carry the tunnel to one VTEP: its virtual port, its overlay entry, and all that these two lead to.
///
/// Reads the chip's tables at construction; handles are weak or the tables' own, so that showing keeps nothing alive.
/// Main thread only.
class Chain {
 public:
  Chain(Asic::Chip const& chip, Meshal::IpGenAddr const& vtep);

  /// Null if there is none.
  Asic::EntryHandle::PtrConst const& virtualPort() const { return virtualPort_; }
  /// The overlay entry of the kind that the chip has; null if there is none.
  Asic::EntryHandle::PtrConst const& overlay() const { return overlay_; }
  /// Both and every row below them, each once: virtual port, overlay entry, outer header, group, its members, next
  /// hops.
  std::vector<Asic::EntryHandle::PtrConst> const& rows() const { return rows_; }
  /// The first of `rows` that the chip does not have; null if it has all.
  Asic::EntryHandle::PtrConst firstUnwritten() const;
  /// How many next hops the overlay entry leads to, those that drop packets apart.
  std::size_t nextHops() const;

 private:
  void add(Asic::EntryHandle::PtrConst const& handle);

  Asic::StoreBase const* nextHopStore_;
  Asic::EntryHandle::PtrConst virtualPort_;
  Asic::EntryHandle::PtrConst overlay_;
  std::vector<Asic::EntryHandle::PtrConst> rows_;
};

/// Tells for many VTEPs which of them the chip carries; looks once at each row, however many VTEPs share it.
///
/// REQUIRES: no table changes during its life.
class CarriedVteps {
 public:
  explicit CarriedVteps(Asic::Chip const& chip);

  /// Whether the chip has every row of the chain to `vtep`, and the chain ends in at least one next hop that sends
  /// packets: `Chain::firstUnwritten` is null and `Chain::nextHops` is not 0.
  bool carries(Meshal::IpGenAddr const& vtep);

 private:
  /// Of a row and all below it.
  struct Verdict {
    bool written;
    bool nextHop;
  };
  Verdict at(Asic::EntryHandle::PtrConst const& handle);

  Asic::Chip const& chip_;
  Asic::StoreBase const* nextHopStore_;
  boost::unordered_flat_map<Asic::RecordBase const*, Verdict> known_;
};

}  // namespace Host
