// What a row costs on its way through the table library, beside the same row in a flat hash map.

#include <benchmark/benchmark.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include "platform/asic/ProfileLoader.h"
#include "platform/asic/SimulatedChip.h"
#include "platform/stateway/EntityManager.h"
#include "platform/tessel/tables/EgrL3Ipv4TunnelTable.h"
#include "platform/tessel/tables/IngL3EcmpMember0Table.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"

namespace {

using Handle = Asic::EntryHandle::PtrConst;
using Meshal::IpGenAddr;
using TesselL3Common::VirtualPortTableMerged;
using TesselVxlan::EgrL3Ipv4TunnelTable;
using TesselVxlan::IngL3EcmpMember0Table;

constexpr std::uint32_t kTunnels = 24576;

IpGenAddr vtep(std::uint32_t n) { return IpGenAddr(Meshal::IpAddr(0x0a010000 + n)); }

struct Tables {
  explicit Tables(Asic::Completion completion)
      : chip(Asic::makeSimulatedChip(Asic::loadProfile("cascaded"), completion)) {
    Asic::ChipInfo const info(chip);
    Asic::bringUp(*headers, nullptr, info);
    Asic::bringUp(*ports, nullptr, info);
    Asic::bringUp(*overlay, nullptr, info);
  }

  /// The three rows that each tunnel has of its own.
  void tunnel(std::uint32_t n, std::uint16_t udpPort) {
    auto const addr = vtep(n);
    EgrL3Ipv4TunnelTable::Entry header;
    header.dip = addr;
    header.udpDestPort = udpPort;
    auto const headerHandle = headers->entryRef({vtep(0), addr}, header);
    VirtualPortTableMerged::Entry port;
    port.vp1.vp1UpdateCount = ports->virtualPort1TableEntry(addr).vp1UpdateCount + 1;
    port.vp2.egrL3TunnelTableHandle = headerHandle;
    port.writeResponse = [this](Asic::EntryState) { ++responses; };
    auto const portHandle = ports->entryCommit(addr, port);
    port.writeResponse(portHandle->state());
    IngL3EcmpMember0Table::Entry next;
    next.vpHandle = portHandle;
    next.writeResponse = [this](Asic::EntryState) { ++responses; };
    overlay->entryCommit(addr, next);
  }
  void settle() {
    while (chip->deliver() > 0) {
    }
  }
  void clear() {
    overlay->entryRemoveAll();
    ports->entryRemoveAll();
  }

  std::uint64_t responses = 0;
  Dovel::Ptr<Asic::Chip> chip;
  Dovel::Ptr<EgrL3Ipv4TunnelTable> headers = TesselVxlan::egrL3Ipv4TunnelTableFactory();
  Dovel::Ptr<VirtualPortTableMerged> ports = TesselL3Common::virtualPortTableMergedFactory();
  Dovel::Ptr<IngL3EcmpMember0Table> overlay = TesselVxlan::ingL3EcmpMember0TableFactory();
};

void createThreeRows(benchmark::State& state) {
  Tables tables(static_cast<Asic::Completion>(state.range(0)));
  for (auto _ : state) {
    for (std::uint32_t n = 1; n <= kTunnels; ++n) {
      tables.tunnel(n, 4789);
      tables.settle();
    }
    state.PauseTiming();
    tables.clear();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kTunnels);
}
BENCHMARK(createThreeRows)->Arg(0)->Arg(1);

void rewriteThreeRows(benchmark::State& state) {
  Tables tables(Asic::Completion::direct);
  for (std::uint32_t n = 1; n <= kTunnels; ++n) tables.tunnel(n, 4789);
  std::uint16_t port = 1;
  for (auto _ : state) {
    ++port;
    for (std::uint32_t n = 1; n <= kTunnels; ++n) {
      tables.tunnel(n, port);
      tables.settle();
    }
  }
  state.SetItemsProcessed(state.iterations() * kTunnels);
}
BENCHMARK(rewriteThreeRows);

void removeThreeRows(benchmark::State& state) {
  Tables tables(Asic::Completion::direct);
  for (auto _ : state) {
    state.PauseTiming();
    for (std::uint32_t n = 1; n <= kTunnels; ++n) tables.tunnel(n, 4789);
    tables.settle();
    state.ResumeTiming();
    for (std::uint32_t n = 1; n <= kTunnels; ++n) {
      tables.overlay->entryRemove(vtep(n));
      tables.ports->entryRemove(vtep(n));
    }
  }
  state.SetItemsProcessed(state.iterations() * kTunnels);
}
BENCHMARK(removeThreeRows);

/// The same rows, of the same sizes, without handles, states, responses or a chip.
void createThreeRowsInFlatMaps(benchmark::State& state) {
  struct Header {
    IpGenAddr sip, dip;
    std::uint64_t rest[2];
  };
  struct Port {
    std::uint32_t header;
    std::uint8_t rest[60];
  };
  struct Next {
    std::uint32_t port, underlay, rest[2];
  };
  for (auto _ : state) {
    boost::unordered_flat_map<IpGenAddr, Header, Kiln::Hash<IpGenAddr>> headers(kTunnels);
    boost::unordered_flat_map<IpGenAddr, Port, Kiln::Hash<IpGenAddr>> ports(kTunnels);
    boost::unordered_flat_map<IpGenAddr, Next, Kiln::Hash<IpGenAddr>> overlay(kTunnels);
    for (std::uint32_t n = 1; n <= kTunnels; ++n) {
      auto const addr = vtep(n);
      headers.emplace(addr, Header{vtep(0), addr, {}});
      ports.emplace(addr, Port{n, {}});
      overlay.emplace(addr, Next{n, 0, {}});
    }
    benchmark::DoNotOptimize(overlay.size() + ports.size() + headers.size());
  }
  state.SetItemsProcessed(state.iterations() * kTunnels);
}
BENCHMARK(createThreeRowsInFlatMaps);

}  // namespace
