#include "TesselVxlan/overlay/TesselVxlanTunnelTermTableProgrammer.h"

#include <type_traits>

#include "platform/kiln/Invariant.h"
#include "platform/kiln/Trace.h"
#include "platform/tessel/LogMessages.h"

KILN_TRACE_FILE("TesselVxlanTunnelTermTableProgrammer");

namespace TesselVxlan {

using Asic::EntryState;
using Meshal::IpGenAddr;

namespace {

Kiln::LogHandle ipv4DipFull(TesselLog::TESSEL_VXLAN_IPV4_DIP_RESOURCE_FULL, 0, 1.0, 0, 0);
Kiln::LogHandle ipv6DipFull(TesselLog::TESSEL_VXLAN_IPV6_DIP_RESOURCE_FULL, 0, 1.0, 0, 0);
Kiln::LogHandle sipSvpFull(TesselLog::TESSEL_VXLAN_SIP_SVP_MAPPING_RESOURCE_FULL, 0, 1.0, 0, 0);

/// The one row of port sets; row 0 stays empty.
constexpr std::uint16_t allPorts = 1;

// What the tables of one kind differ in is said by their names alone.
struct DipWords {
  char const* table;
  Kiln::LogHandle& full;
};
DipWords const ipv4Dip{"l2TunnelIpv4DipTable", ipv4DipFull};
DipWords const ipv6Dip{"l2TunnelIpv6DipTable", ipv6DipFull};
DipWords const& wordsOf(L2TunnelIpv4DipTable const&) { return ipv4Dip; }
DipWords const& wordsOf(L2TunnelIpv6DipTable const&) { return ipv6Dip; }
char const* chipNameOf(L2TunnelIpv4SipTable const&) { return "l2_tunnel_ipv4_sip"; }
char const* chipNameOf(L2TunnelIpv6SipTable const&) { return "l2_tunnel_ipv6_sip"; }

// Responses keep the table, not the programmer, which may be destroyed before the chip completes the write.
struct DipResponse {
  Dovel::Ptr<Asic::SwTable const> table;
  IpGenAddr addr;
  DipWords const& words;

  void operator()(EntryState state) const {
    TRACE_IN("operator()", 1, "entryState is :  {}", state);
    if (state != EntryState::full) return;
    TRACE_IN("operator()", 0, "The {} programming failed", words.table);
    Kiln::log(words.full, addr);
  }
};

struct SipResponse {
  Dovel::Ptr<Asic::SwTable const> table;
  IpGenAddr addr;
  std::uint16_t svp;

  void operator()(EntryState state) const {
    TRACE_IN("operator()", 1, "entryState is :  {}", state);
    if (state == EntryState::full) Kiln::log(sipSvpFull, addr, svp);
  }
};

/// Calls `call(table, key)` for the table of the address's family, unless the chip doesn't have it. False for an
/// address without family.
template <class V4, class V6, class Call>
bool byFamily(IpGenAddr const& addr, Dovel::Ptr<V4> const& v4, Dovel::Ptr<V6> const& v6, Call&& call) {
  auto const callWith = [&](auto const& table, auto const& key) {
    table ? call(table, key) : TRACE_IN("byFamily", 1, " no table for address: {}", addr);
  };
  if (addr.isIpv4()) {
    callWith(v4, typename V4::Key{addr.v4Addr()});
  } else if (addr.isIpv6()) {
    callWith(v6, typename V6::Key{addr});
  } else {
    return false;
  }
  return true;
}

template <class TablePtr>
using EntryOf = typename TablePtr::element_type::Entry;

}  // namespace

TesselVxlanTunnelTermTableProgrammer::TesselVxlanTunnelTermTableProgrammer(
    Dovel::Ptr<Stateway::EntityManager> statewayEm, Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> fcsd,
    Dovel::Ptr<Vxlan::VxlanConfigDir const> vxlanConfigDir)
    : statewayEm_(std::move(statewayEm)), fcsd_(std::move(fcsd)), vxlanConfigDir_(std::move(vxlanConfigDir)) {}

template <class Table>
Dovel::Ptr<Table> TesselVxlanTunnelTermTableProgrammer::broughtUp(Dovel::Ptr<Table> const& table,
                                                                  TesselCentral::ChipInfo const& chipInfo) const {
  Asic::bringUp(*table, statewayEm(), chipInfo);
  return table;
}

void TesselVxlanTunnelTermTableProgrammer::initAllowedPortsProfileTable(TesselCentral::ChipInfo const& chipInfo) {
  TRACE(0, "Allocating AllowedPortBitmapProfile termination table");
  INVARIANT(fcsd()->logicalModInfos());
  allowedPortBitmapProfileIs(broughtUp(allowedPortBitmapProfileFactory(), chipInfo));
  INVARIANT(allowedPortBitmapProfile()->entrys() == 0);
  AllowedPortBitmapProfile::Entry entry;
  for (std::size_t word = 0; word < Anvil::PerUnitBitmap::kWords; ++word) entry.ports.bitListIs(word, 0xFFFFFFFF);
  allowedPortBitmapProfile()->entryWriteAtIndex(Asic::Index(allPorts), entry);
}

void TesselVxlanTunnelTermTableProgrammer::initDipTable(TesselCentral::ChipInfo const& chipInfo) {
  INVARIANT(fcsd()->logicalModInfos());
  TRACE(0, "Allocating L2TunnelIpv4Dip termination table");
  l2TunnelIpv4DipTableIs(broughtUp(l2TunnelIpv4DipTableFactory(), chipInfo));
  INVARIANT(l2TunnelIpv4DipTable()->entrys() == 0);
}

void TesselVxlanTunnelTermTableProgrammer::initSipTable(TesselCentral::ChipInfo const& chipInfo) {
  INVARIANT(fcsd()->logicalModInfos());
  TRACE(0, "Allocating L2TunnelIpv4Sip termination table");
  l2TunnelIpv4SipTableIs(broughtUp(l2TunnelIpv4SipTableFactory(), chipInfo));
  INVARIANT(l2TunnelIpv4SipTable()->entrys() == 0);
}

void TesselVxlanTunnelTermTableProgrammer::initDipV6Table(TesselCentral::ChipInfo const& chipInfo) {
  INVARIANT(fcsd()->logicalModInfos());
  TRACE(0, "Allocating L2TunnelIpv6Dip termination table");
  l2TunnelIpv6DipTableIs(broughtUp(l2TunnelIpv6DipTableFactory(), chipInfo));
  INVARIANT(l2TunnelIpv6DipTable()->entrys() == 0);
}

void TesselVxlanTunnelTermTableProgrammer::initSipV6Table(TesselCentral::ChipInfo const& chipInfo) {
  INVARIANT(fcsd()->logicalModInfos());
  TRACE(0, "Allocating L2TunnelIpv6Sip termination table");
  l2TunnelIpv6SipTableIs(broughtUp(l2TunnelIpv6SipTableFactory(), chipInfo));
  INVARIANT(l2TunnelIpv6SipTable()->entrys() == 0);
}

void TesselVxlanTunnelTermTableProgrammer::insertOrUpdateDipEntry(IpGenAddr const& addr) {
  TRACE(1, " dip: {}", addr);
  bool const valid =
      byFamily(addr, l2TunnelIpv4DipTable(), l2TunnelIpv6DipTable(), [&](auto const& table, auto const& key) {
        EntryOf<std::remove_cvref_t<decltype(table)>> entry;
        entry.allowedPortsProfileIndex = allPorts;
        entry.useOuterHeaderPhb = vxlanConfigDir()->outerHeaderPhb();
        TRACE_IN("insertOrUpdateDipEntry", 1, " dip: {} useOuterHeaderPhb: {}", addr,
                 vxlanConfigDir()->outerHeaderPhb());
        entry.writeResponse = DipResponse{table, addr, wordsOf(*table)};
        table->entryCommit(key, std::move(entry), Asic::Report::atOnce);
      });
  if (!valid) INVARIANT(false && "DIP is not a valid ipv4/6 address");
}

void TesselVxlanTunnelTermTableProgrammer::deleteDipEntry(IpGenAddr const& addr) {
  TRACE(1, " dip: {}", addr);
  bool const valid =
      byFamily(addr, l2TunnelIpv4DipTable(), l2TunnelIpv6DipTable(), [&](auto const& table, auto const& key) {
        if constexpr (std::is_same_v<decltype(table), Dovel::Ptr<L2TunnelIpv4DipTable> const&>) {
          INVARIANT_MSG(l2TunnelIpv4DipTable()->entryHas(key), " addr missing in l2_tunnel_ipv4_dip table: {}", addr);
        } else {
          INVARIANT_MSG(l2TunnelIpv6DipTable()->entryHas(key), " addr missing in l2_tunnel_ipv6_dip table: {}", addr);
        }
        table->entryRemove(key);
      });
  if (!valid) INVARIANT(false && "DIP is not a valid ipv4/6 address");
}

bool TesselVxlanTunnelTermTableProgrammer::dipEntryHas(IpGenAddr const& addr) const {
  bool has = false;
  byFamily(addr, l2TunnelIpv4DipTable(), l2TunnelIpv6DipTable(),
           [&](auto const& table, auto const& key) { has = table->entryHas(key); });
  return has;
}

bool TesselVxlanTunnelTermTableProgrammer::sipEntryHas(IpGenAddr const& addr) const {
  bool has = false;
  byFamily(addr, l2TunnelIpv4SipTable(), l2TunnelIpv6SipTable(),
           [&](auto const& table, auto const& key) { has = table->entryHas(key); });
  return has;
}

bool TesselVxlanTunnelTermTableProgrammer::sipEntryHeld(IpGenAddr const& addr, SipHolder holder) {
  if (floodSips_.empty()) return false;
  auto const found = floodSips_.find(addr);
  if (found == floodSips_.end()) return false;
  if (holder == SipHolder::nextHop) {
    found->second = false;
    return true;
  }
  bool const byNextHop = found->second;
  floodSips_.erase(found);
  return byNextHop;
}

void TesselVxlanTunnelTermTableProgrammer::insertSipEntry(IpGenAddr const& addr, Handle const& svpHandle,
                                                          SipHolder holder) {
  TRACE(1, " sip: {} svp : {}", addr, svpHandle);
  // A row without a port would take the VTEP's packets away from the default port, where they are learned from.
  if (!svpHandle || svpHandle->gone()) return TRACE(1, " virtual port has gone, sip: {} not written", addr);
  if (holder == SipHolder::floodTunnel) {
    floodSips_.try_emplace(addr, sipEntryHas(addr));
  } else if (!floodSips_.empty()) {
    auto const held = floodSips_.find(addr);
    if (held != floodSips_.end()) held->second = true;
  }
  bool const valid =
      byFamily(addr, l2TunnelIpv4SipTable(), l2TunnelIpv6SipTable(), [&](auto const& table, auto const& key) {
        EntryOf<std::remove_cvref_t<decltype(table)>> entry;
        entry.svpHandle = svpHandle;
        entry.writeResponse = SipResponse{table, addr, Asic::rowNumber16(svpHandle)};
        table->entryCommit(key, std::move(entry), Asic::Report::atOnce);
      });
  if (!valid) INVARIANT(false && "SIP is not a valid ipv4/6 address");
}

void TesselVxlanTunnelTermTableProgrammer::deleteSipEntry(IpGenAddr const& addr, SipHolder holder) {
  TRACE(1, " sip: {}", addr);
  if (sipEntryHeld(addr, holder)) return;
  bool const valid =
      byFamily(addr, l2TunnelIpv4SipTable(), l2TunnelIpv6SipTable(), [&](auto const& table, auto const& key) {
        if (!table->entryHas(key)) {
          return TRACE_IN("deleteSipEntry", 1, " Address missing in {} table", chipNameOf(*table));
        }
        table->entryRemove(key);
      });
  if (!valid) INVARIANT(false && "SIP is not a valid ipv4/6 address");
}

}  // namespace TesselVxlan
