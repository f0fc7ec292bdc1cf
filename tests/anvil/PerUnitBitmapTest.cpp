#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/anvil/PerUnitBitmap.h"

namespace {

TEST(PerUnitBitmap, wordsAreKeptApartAndShownInOrder) {
  Anvil::PerUnitBitmap bitmap;
  EXPECT_EQ(bitmap, Anvil::PerUnitBitmap());
  bitmap.bitListIs(0, 0xffffffff);
  bitmap.bitListIs(10, 0x1f);
  EXPECT_NE(bitmap, Anvil::PerUnitBitmap());
  std::string text;
  appendText(text, bitmap);
  EXPECT_EQ(text, "ffffffff 00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 0000001f");
  Anvil::PerUnitBitmap parsed;
  EXPECT_TRUE(parseText(text, parsed));
  EXPECT_EQ(parsed, bitmap);
  for (auto const* bad : {"", "ffffffff"}) EXPECT_FALSE(parseText(bad, parsed));
  for (auto const& [at, character] : {std::pair{8u, '0'}, {9u, 'g'}, {97u, ' '}}) {
    auto wrong = text;
    wrong[at] = character;
    EXPECT_FALSE(parseText(wrong, parsed)) << wrong;
  }
  EXPECT_EQ(parsed, bitmap);
}

}  // namespace
