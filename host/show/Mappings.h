#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/agent/Agent.h"
#include "host/show/NeededRow.h"
#include "platform/anvil/IoctlDrv.h"
#include "platform/tessel/central/VxlanRecords.h"
#include "platform/vane/VaneHelperVni.h"

namespace Host {

/// The state of one stated mapping of a VLAN and a VNI, for show.
struct MappingReport {
  enum class Kind : std::uint8_t {
    local,   ///< The VNI of a VLAN of this switch.
    remote,  ///< The VLAN of a VNI from elsewhere.
  };
  enum class State : std::uint8_t {
    programmed,  ///< The chip has every row of it, and the packet driver its VLAN.
    pending,     ///< A local mapping has the VNI.
    removed,     ///< Its action asks for no rows.
    missing,     ///< It is to be programmed, and is not.
  };

  Kind kind{};
  Meshal::IntfId vti;
  std::uint16_t vlan = 0;
  Vxlan::VniExtOrNone vni;
  std::optional<std::uint32_t> vfi{};  ///< That its VNI leads to by its row; of a port group's row without VNI tables.
  State state{};
  std::optional<std::string> reason{};  ///< Why it is not programmed; nothing if it is.

  bool programmed() const { return state == State::programmed; }
  bool pending() const { return state == State::pending; }
  /// False if it is to be programmed and is not. A mapping that waits for its VNI is as wanted: local ones come first.
  bool isAsWanted() const { return state != State::missing; }
};

/// The stated mappings: local ones by interface and VLAN, then remote ones by interface and VNI. REQUIRES: settled.
std::vector<MappingReport> mappingReports(Agent const& agent);
/// Those of one VNI.
std::vector<MappingReport> mappingReports(Agent const& agent, Vxlan::VniExt vni);
/// "local" or "remote".
std::string_view kindText(MappingReport::Kind kind);
/// "programmed", or "pending: …", "not programmed: …" with the reason.
std::string stateText(MappingReport const& mapping);

/// What the chip and the packet driver have of mappings. Handles are weak. Main thread only.
class MappingRows {
 public:
  explicit MappingRows(Agent const& agent);

  /// Whether the chip has port groups in place of VNI tables.
  bool hasPortGroups() const { return hasPortGroups_; }
  /// The row that a packet with the VNI is received by.
  NeededRow ingress(Vxlan::VniExtOrNone vni) const;
  /// The rows, one for each logical chip, that packets of a VLAN leave by; those of its port group on chips with port
  /// groups.
  std::vector<NeededRow> egress(std::uint16_t vlan) const;
  /// The VLAN of the VNI in the packet driver; 0 for none.
  std::uint16_t driverVlan(Vxlan::VniExtOrNone vni) const;
  /// The VFI of a VLAN by the switch's numbering.
  std::uint16_t vfiOf(std::uint16_t vlan) const;
  /// The first thing that a mapping lacks: the chip's row of its VNI, those of its VLAN, the packet driver's VLAN.
  /// Nothing if it has all.
  std::optional<std::string> gap(MappingReport const& mapping) const;

 private:
  Asic::Chip const& chip_;
  bool hasPortGroups_;
  Dovel::Ptr<TesselCentral::VfiCapabilityStatus> vfiCapabilities_;
  Dovel::Ptr<TesselCentral::VlanVfiDir> vlanVfiDir_;
  Dovel::Ptr<Anvil::IoctlDrvFab> packetDriver_;
};

}  // namespace Host
