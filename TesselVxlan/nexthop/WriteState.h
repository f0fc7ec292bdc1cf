#pragma once

#include "platform/asic/SwTable.h"
#include "platform/kiln/FunctionRef.h"

namespace TesselVxlan {

/// What a write response does in each state of its write. The callables live for the time of one `byState`.
struct WriteStateCases {
  Kiln::FunctionRef<void()> inProgress;
  Kiln::FunctionRef<void()> written;
  Kiln::FunctionRef<void(bool full)> failed;  ///< `full`: because the chip's table has no row left.
  Kiln::FunctionRef<void()> unexpected;       ///< No state that a table delivers.
};

/// Runs the case of `state`.
inline void byState(Asic::SwTableBase::EntryState state, WriteStateCases const& cases) {
  switch (static_cast<unsigned>(state)) {
    case 1: return cases.inProgress();
    case 3: return cases.written();
    case 4: return cases.failed(false);
    case 5: return cases.failed(true);
    default: return cases.unexpected();
  }
}

}  // namespace TesselVxlan
