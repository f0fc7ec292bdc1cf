#pragma once

#include "platform/asic/SwTable.h"

namespace TesselVxlan {

struct RL2TunnelDefaultNetworkSvpEntry : Asic::EntryBase {
  std::uint16_t svp = 0;
  ASIC_ENTRY(RL2TunnelDefaultNetworkSvpEntry, svp)
};

/// The source virtual port of packets from an unknown remote VTEP.
class RL2TunnelDefaultNetworkSvp final
    : public Asic::IndexTable<RL2TunnelDefaultNetworkSvp, RL2TunnelDefaultNetworkSvpEntry> {
  ASIC_TABLE(TesselVxlan::RL2TunnelDefaultNetworkSvp)

 public:
  using IndexTable::IndexTable;
};
inline Dovel::Ptr<RL2TunnelDefaultNetworkSvp> rL2TunnelDefaultNetworkSvpFactory() {
  return Dovel::make<RL2TunnelDefaultNetworkSvp>("RL2TunnelDefaultNetworkSvp");
}

}  // namespace TesselVxlan
