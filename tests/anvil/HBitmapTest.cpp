#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

#include "platform/anvil/HBitmap.h"
#include "platform/anvil/IncrementalHBitmap.h"

namespace {

using Anvil::HBitmap;
using Bit = HBitmap::Bit;

/// What the bitmap must answer, by searching.
struct NaivePool {
  explicit NaivePool(Bit size) : used(size) {}

  std::optional<Bit> findClearRange(Bit length) const {
    auto const at = std::search_n(used.begin(), used.end(), length, char{0});
    if (at == used.end()) return {};
    return static_cast<Bit>(at - used.begin());
  }

  std::vector<char> used;
};

class HBitmapSizes : public testing::TestWithParam<Bit> {};

// Sizes on both sides of a full word at every level, where a wrong bit past the end would be handed out.
INSTANTIATE_TEST_SUITE_P(EdgesOfLevels, HBitmapSizes,
                         testing::Values(1, 63, 64, 65, 4095, 4096, 4097, 24576, 262143, 262144, 262145));

TEST_P(HBitmapSizes, fillsLowestFirstAndHealsWhereItWasCleared) {
  HBitmap bitmap(GetParam());
  for (Bit i = 0; i < bitmap.size(); ++i) {
    ASSERT_EQ(bitmap.findClearBit(), i);
    bitmap.setBit(i);
  }
  EXPECT_EQ(bitmap.findClearBit(), std::nullopt);
  EXPECT_EQ(bitmap.findClearRange(1), std::nullopt);
  EXPECT_EQ(bitmap.count(), bitmap.size());
  for (Bit const bit : {bitmap.size() - 1, bitmap.size() / 2, Bit{0}}) {
    bitmap.clearBit(bit);
    bitmap.clearBit(bit);
    EXPECT_EQ(bitmap.findClearBit(), bit);
  }
  bitmap.clearRange(0, bitmap.size());
  EXPECT_EQ(bitmap, HBitmap(GetParam()));
}

TEST_P(HBitmapSizes, agreesWithASearchOverRandomRanges) {
  auto const seed = std::random_device{}();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  HBitmap bitmap(GetParam());
  NaivePool naive(GetParam());
  for (int step = 0; step < 60; ++step) {
    auto const first = static_cast<Bit>(random() % bitmap.size());
    auto const length = static_cast<Bit>(random() % std::min<Bit>(bitmap.size() - first, 300) + 1);
    auto const set = random() % 3 != 0;
    set ? bitmap.setRange(first, length) : bitmap.clearRange(first, length);
    std::fill_n(naive.used.begin() + first, length, set);
    auto const wanted = static_cast<Bit>(random() % 200 + 1);
    ASSERT_EQ(bitmap.findClearRange(wanted), naive.findClearRange(wanted)) << "run of " << wanted;
    ASSERT_EQ(bitmap.findClearBit(), naive.findClearRange(1));
    ASSERT_EQ(bitmap.count(), std::count(naive.used.begin(), naive.used.end(), char{1}));
  }
}

TEST(IncrementalHBitmap, countsFromItsBaseAndStartsClearWhateverTheBitState) {
  auto const pool = Anvil::incrementalHBitmapFactory(4097, 3, 1, 0);
  for (Bit id : {4097u, 4098u, 4099u}) {
    EXPECT_EQ(pool->findClearBit(), id);
    pool->setBit(id);
  }
  EXPECT_EQ(pool->findClearBit(), std::nullopt);
  pool->clearBit(4098);
  EXPECT_EQ(pool->findClearBit(), 4098u);
}

TEST(HBitmap, anEmptyPoolGivesNothing) {
  EXPECT_EQ(HBitmap().findClearBit(), std::nullopt);
  EXPECT_EQ(HBitmap(0).findClearRange(1), std::nullopt);
}

}  // namespace
