#pragma once

namespace Kiln {

/// A time or a duration.
using Seconds = double;

}  // namespace Kiln
