#include "platform/anvil/HBitmap.h"

int main() {
  Anvil::HBitmap bitmap(100);
  bitmap.setRange(0, 10);
  return bitmap.findClearBit() == 10 ? 0 : 1;
}
