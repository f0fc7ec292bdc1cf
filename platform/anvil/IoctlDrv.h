#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Entity.h"

namespace Anvil {

/// The packet driver of the operating system, as this agent sees it: which VLAN the packets of a VNI belong to that the
/// CPU sends and receives, and which requests led to it. Outlives the agent's process.
class IoctlDrvFab final : public Kiln::NamedEntity {
  KILN_TYPE(Anvil::IoctlDrvFab, Kiln::NamedEntity)
  KILN_COLL(0x102, std::uint32_t, std::uint16_t, vniToVlan)
  KILN_ATTR(0x103, std::uint64_t, requests)  ///< How many there were.
  /// The last `kept` of them by number, from 1: "vni 10010 vlan 10"; VLAN 0 removes.
  KILN_ID_COLL(0x104, std::uint32_t, Dovel::String, request)

 public:
  using NamedEntity::NamedEntity;
  static constexpr std::uint64_t kept = 64;
};

/// Passes requests to the packet driver. Main thread only.
class IoctlDrv final : public Dovel::Node {
  KILN_BASE_TYPE(Anvil::IoctlDrv)

 public:
  /// Null: requests have no effect.
  explicit IoctlDrv(Dovel::Ptr<IoctlDrvFab> fab) : fab_(std::move(fab)) {}

  /// Assigns a VLAN to a VNI; VLAN 0 removes the VNI. A number that is no VNI only counts as a request.
  void vniToVlanMap(std::uint32_t vni, std::uint16_t vlan);

 private:
  Dovel::Ptr<IoctlDrvFab> fab_;
};

inline constexpr Dovel::Factory<IoctlDrv> ioctlDrvFabFactory;

}  // namespace Anvil
