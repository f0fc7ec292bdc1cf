#include "platform/anvil/IncrementalHBitmap.h"

#include "platform/kiln/Text.h"

namespace Anvil {

void appendText(std::string& out, IncrementalHBitmap const& bitmap) {
  Kiln::writeText(out, bitmap.count());
  out += " of ";
  Kiln::writeText(out, bitmap.size());
  out += " set";
}

Dovel::Ptr<IncrementalHBitmap> incrementalHBitmapFactory(std::uint32_t base, std::uint32_t size, std::uint32_t,
                                                         std::uint32_t) {
  return Dovel::make<IncrementalHBitmap>(base, size);
}

}  // namespace Anvil
