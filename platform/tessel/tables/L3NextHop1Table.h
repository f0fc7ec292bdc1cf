#pragma once

#include "platform/asic/SwTable.h"
#include "platform/meshal/IpGenAddr.h"

namespace TesselVxlan {

/// Ingress part of an overlay next hop: the way through the underlay. Its row is the tunnel's next-hop id.
class IngL3NextHop1 final : public Asic::PartTable<IngL3NextHop1> {
  ASIC_TABLE(TesselVxlan::IngL3NextHop1)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    Asic::EntryHandle::PtrConst ulEntryHandle;  ///< An underlay next hop, or a group with `ecmp`.
    std::uint16_t reservedWord = 0;
    std::uint8_t ecmp = 0;
    ASIC_ENTRY(Entry, ulEntryHandle, reservedWord, ecmp)
  };
};

/// Egress part of an overlay next hop: virtual port and encapsulation class.
class EgrL3NextHop1 final : public Asic::PartTable<EgrL3NextHop1> {
  ASIC_TABLE(TesselVxlan::EgrL3NextHop1)

 public:
  using PartTable::PartTable;
  struct Entry : Asic::EntryBase {
    Asic::EntryHandle::PtrConst vpHandle;
    Asic::EntryHandle::PtrConst oif1Handle;
    std::uint32_t reservedLong = 0;
    std::uint8_t nextHopValid = 0;
    ASIC_ENTRY(Entry, vpHandle, oif1Handle, reservedLong, nextHopValid)
  };
};

struct L3NextHop1Entry : Asic::EntryBase {
  IngL3NextHop1::Entry ingress;
  EgrL3NextHop1::Entry egress;
  Asic::WriteResponseFn writeResponse;
  ASIC_ENTRY(L3NextHop1Entry, ingress, egress, writeResponse)
};

/// Overlay next hops by remote VTEP.
class L3NextHop1Table final : public Asic::CommittedTable<L3NextHop1Table, Meshal::IpGenAddr, L3NextHop1Entry> {
  ASIC_TABLE(TesselVxlan::L3NextHop1Table)

 public:
  using CommittedTable::CommittedTable;
  using Parts = boost::mp11::mp_list<IngL3NextHop1, EgrL3NextHop1>;

  IngL3NextHop1::Entry const& ingL3NextHop1Entry(Key const& key) const { return entry(key).ingress; }
  EgrL3NextHop1::Entry const& egrL3NextHop1Entry(Key const& key) const { return entry(key).egress; }
  /// The ingress part, for its rows. Null before `doInit`.
  Dovel::Ptr<IngL3NextHop1> const& ingL3NextHop1() const { return ingL3NextHop1_; }

 protected:
  void bound() override {
    ingL3NextHop1_ = Dovel::make<IngL3NextHop1>("IngL3NextHop1");
    ingL3NextHop1_->baseIs(store()->base(0));
  }

 private:
  Dovel::Ptr<IngL3NextHop1> ingL3NextHop1_;
};
inline Dovel::Ptr<L3NextHop1Table> l3NextHop1TableFactory() { return Dovel::make<L3NextHop1Table>("L3NextHop1Table"); }

}  // namespace TesselVxlan
