#pragma once

#include "platform/kiln/Codec.h"
#include "platform/kiln/StrongId.h"

namespace LogicalFap {

/// A logical chip.
struct LogicalFapId : Kiln::StrongId<LogicalFapId> {
  using StrongId::StrongId;
};

}  // namespace LogicalFap

KILN_DECLARE_CODEC(LogicalFap::LogicalFapId);
