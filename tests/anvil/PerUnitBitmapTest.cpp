#include <gtest/gtest.h>

#include "platform/anvil/PerUnitBitmap.h"

namespace {

TEST(PerUnitBitmap, wordsAreKeptApartAndShownInOrder) {
  Anvil::PerUnitBitmap bitmap;
  EXPECT_EQ(bitmap, Anvil::PerUnitBitmap());
  bitmap.bitListIs(0, 0xffffffff);
  bitmap.bitListIs(10, 0x1f);
  EXPECT_NE(bitmap, Anvil::PerUnitBitmap());
  std::string text;
  bitmap.appendText(text);
  EXPECT_EQ(text, "ffffffff 00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 0000001f");
}

}  // namespace
