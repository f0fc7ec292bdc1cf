#include "platform/anvil/IncrementalHBitmap.h"

#include <fmt/format.h>

#include <iterator>

namespace Anvil {

void appendText(std::string& out, IncrementalHBitmap const& bitmap) {
  fmt::format_to(std::back_inserter(out), "{} of {} set", bitmap.count(), bitmap.size());
}

Dovel::Ptr<IncrementalHBitmap> incrementalHBitmapFactory(std::uint32_t base, std::uint32_t size, std::uint32_t,
                                                         std::uint32_t) {
  return Dovel::make<IncrementalHBitmap>(base, size);
}

}  // namespace Anvil
