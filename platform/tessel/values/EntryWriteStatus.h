#pragma once

#include <cstdint>

#include "platform/kiln/Codec.h"
#include "platform/kiln/Text.h"

namespace TesselCentral {

/// The outcome of writing the row whose id is published with it.
enum EntryWriteStatus : std::uint8_t {
  entryWriteNone = 0,    ///< Nothing written, or invalidated since.
  entryWriteDone = 1,    ///< In hardware; the id is good.
  entryWriteFailed = 2,  ///< The write failed; the id is `unprogrammed()`.
};
BOOST_DESCRIBE_ENUM(EntryWriteStatus, entryWriteNone, entryWriteDone, entryWriteFailed)
KILN_VALUE_STREAM(EntryWriteStatus)

}  // namespace TesselCentral

KILN_DECLARE_CODEC(TesselCentral::EntryWriteStatus);
