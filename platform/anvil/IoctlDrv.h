#pragma once

#include <cstdint>

#include "platform/dovel/Factory.h"
#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/kiln/Entity.h"

namespace Anvil {

/// One request to the packet driver; VLAN 0 removes the VNI.
struct IoctlRequest {
  std::uint64_t number = 0;  ///< From 1 on.
  std::uint32_t vni = 0;
  std::uint16_t vlan = 0;
};
BOOST_DESCRIBE_STRUCT(IoctlRequest, (), (number, vni, vlan))
KILN_VALUE_OPS(IoctlRequest)

/// The packet driver of the operating system, as this agent sees it: which VLAN the packets of a VNI belong to that the
/// CPU sends and receives, and which requests led to it. Outlives the agent's process.
class IoctlDrvFab final : public Kiln::NamedEntity {
  KILN_TYPE(Anvil::IoctlDrvFab, Kiln::NamedEntity)
  KILN_COLL(0x102, std::uint32_t, std::uint16_t, vniToVlan)
  KILN_ATTR(0x103, std::uint64_t, requests)                  ///< How many there were.
  KILN_ID_COLL(0x104, std::uint32_t, IoctlRequest, request)  ///< The last `kept` of them, by number modulo `kept`.

 public:
  using NamedEntity::NamedEntity;
  static constexpr std::uint32_t kept = 64;
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

KILN_DECLARE_CODEC(Anvil::IoctlRequest);
