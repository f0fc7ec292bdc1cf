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
inline void byState(Asic::EntryState state, WriteStateCases const& cases) {
  using Asic::EntryState;
  switch (state) {
    case EntryState::inProgress:
      return cases.inProgress();
    case EntryState::written:
      return cases.written();
    case EntryState::failed:
      return cases.failed(false);
    case EntryState::full:
      return cases.failed(true);
    default:
      return cases.unexpected();
  }
}

}  // namespace TesselVxlan
