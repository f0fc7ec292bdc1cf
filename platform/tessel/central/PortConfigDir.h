#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Describe.h"
#include "platform/kiln/Entity.h"
#include "platform/meshal/IntfId.h"

namespace TesselCentral {

/// The kind of destination that a port is. The numbers are those of a row's destination.
enum class PortKind : std::uint8_t { port = 0, subPort = 1, lag = 2 };
BOOST_DESCRIBE_ENUM(PortKind, port, subPort, lag)

/// The chip's identification of a port.
struct PortInfo {
  KILN_FIELD(PortKind, kind) = PortKind::port;
  KILN_FIELD(std::uint16_t, number) = 0;
};
BOOST_DESCRIBE_STRUCT(PortInfo, (), (kind_, number_))
KILN_VALUE_OPS(PortInfo)

/// The ports of the chip by interface.
class PortConfigDir final : public Kiln::RevisedEntity {
  KILN_TYPE(TesselCentral::PortConfigDir, Kiln::RevisedEntity)
  KILN_COLL(0x102, Meshal::IntfId, PortInfo, port)

 public:
  using RevisedEntity::RevisedEntity;

  /// Its path in the state database.
  static constexpr char const* mountPath = "hardware/tessel/port/config";
};

}  // namespace TesselCentral

KILN_DECLARE_CODEC(TesselCentral::PortKind);
KILN_DECLARE_CODEC(TesselCentral::PortInfo);
