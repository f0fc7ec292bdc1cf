#pragma once

#include <cstdint>

#include "platform/dovel/Ptr.h"
#include "platform/meshal/IntfId.h"
#include "platform/tessel/central/PortConfigDir.h"
#include "platform/vane/NextHopEntry.h"

namespace TesselCentral {
class FeatureAgentCommonSmData;
}  // namespace TesselCentral

namespace TesselL3Common {

/// The chip's destination of a packet: `kind` selects one of three numbers.
///
/// Kind 0 is a port (`first`), 1 a sub-port (`second`), 2 a link aggregation group (`third`); the other two are 0.
/// The default is invalid, of kind 0.
class DestPort {
 public:
  DestPort() = default;
  explicit DestPort(TesselCentral::PortInfo const& info) : info_(info), valid_(true) {}

  std::uint8_t kind() const { return static_cast<std::uint8_t>(info_.kind()); }
  std::uint16_t first() const { return numberOf(TesselCentral::PortKind::port); }
  std::uint16_t second() const { return numberOf(TesselCentral::PortKind::subPort); }
  std::uint16_t third() const { return numberOf(TesselCentral::PortKind::lag); }
  bool isInvalid() const { return !valid_; }

 private:
  std::uint16_t numberOf(TesselCentral::PortKind kind) const {
    return info_.kind() == kind ? info_.number() : std::uint16_t{0};
  }

  TesselCentral::PortInfo info_;
  bool valid_ = false;
};

/// The destination of packets that leave through `intf`; invalid, of kind 0 and number 0, for an interface without a
/// port. The type of the next hop and the support of layer 2 interfaces make no difference on the chips that the port
/// configuration describes.
DestPort getDstPort(Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData const> const& fcsd, Meshal::IntfId intf,
                    Vane::NextHopEntryType nextHopEntryType, bool l2IfSupported);

}  // namespace TesselL3Common
