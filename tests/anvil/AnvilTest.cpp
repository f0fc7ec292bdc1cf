#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <list>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/anvil/HBitmap.h"
#include "platform/anvil/IncrementalHBitmap.h"
#include "platform/anvil/PerUnitBitmap.h"
#include "platform/scree/Slab.h"

namespace {

using Anvil::HBitmap;
using Bit = HBitmap::Bit;

class HBitmapSizes : public testing::TestWithParam<Bit> {};

// Sizes on both sides of a full word at every level, where a wrong bit past the end would be handed out.
INSTANTIATE_TEST_SUITE_P(EdgesOfLevels, HBitmapSizes,
                         testing::Values(1, 63, 64, 65, 4095, 4096, 4097, 24576, 262143, 262144, 262145));

TEST_P(HBitmapSizes, agreesWithASearchOverRandomRanges) {
  auto const seed = std::random_device{}();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  HBitmap bitmap(GetParam());
  std::vector<char> used(GetParam());
  auto const clearRange = [&](Bit length) -> std::optional<Bit> {
    auto const at = std::search_n(used.begin(), used.end(), length, char{0});
    return at == used.end() ? std::nullopt : std::optional(static_cast<Bit>(at - used.begin()));
  };
  for (int step = 0; step < 60; ++step) {
    auto const first = static_cast<Bit>(random() % bitmap.size());
    auto const length = static_cast<Bit>(random() % std::min<Bit>(bitmap.size() - first, 300) + 1);
    auto const set = random() % 3 != 0;
    set ? bitmap.setRange(first, length) : bitmap.clearRange(first, length);
    std::fill_n(used.begin() + first, length, set);
    auto const wanted = static_cast<Bit>(random() % 200 + 1);
    ASSERT_EQ(bitmap.findClearRange(wanted), clearRange(wanted)) << "run of " << wanted;
    ASSERT_EQ(bitmap.findClearBit(), clearRange(1));
    ASSERT_EQ(bitmap.count(), std::count(used.begin(), used.end(), char{1}));
  }
  bitmap.setRange(0, bitmap.size());
  EXPECT_FALSE(bitmap.findClearBit() || bitmap.findClearRange(1));
  for (int i = 0; i < 2; ++i) bitmap.clearBit(bitmap.size() - 1);
  EXPECT_EQ(bitmap.findClearBit(), bitmap.size() - 1);
}

TEST(HBitmap, mayBeEmptyAndMayCountFromABase) {
  EXPECT_EQ(HBitmap().findClearBit(), std::nullopt);
  EXPECT_EQ(HBitmap(0).findClearRange(1), std::nullopt);
  auto const pool = Anvil::incrementalHBitmapFactory(4097, 3, 1, 0);
  for (Bit id : {4097u, 4098u, 4099u}) {
    EXPECT_EQ(pool->findClearBit(), id) << "clear whatever the bit state";
    pool->setBit(id);
  }
  EXPECT_EQ(pool->findClearBit(), std::nullopt);
  std::string shown;
  appendText(shown, *pool);
  EXPECT_EQ(shown, "3 of 3 set");
  pool->clearBit(4098);
  EXPECT_EQ(pool->findClearBit(), 4098u);
}

TEST(PerUnitBitmap, wordsAreKeptApartAndShownInOrder) {
  Anvil::PerUnitBitmap bitmap;
  bitmap.bitListIs(0, 0xffffffff);
  bitmap.bitListIs(10, 0x1f);
  std::string text;
  appendText(text, bitmap);
  EXPECT_EQ(text, "ffffffff 00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 0000001f");
  Anvil::PerUnitBitmap parsed;
  EXPECT_NE(bitmap, parsed);
  EXPECT_TRUE(parseText(text, parsed));
  EXPECT_EQ(parsed, bitmap);
  for (auto const& [at, character] : {std::pair{8u, '0'}, {9u, 'g'}, {97u, ' '}}) {
    auto wrong = text;
    wrong[at] = character;
    EXPECT_FALSE(parseText(wrong, parsed)) << wrong;
  }
  for (auto const& wrong : {std::string("ffffffff"), text + " 0000001f"}) EXPECT_FALSE(parseText(wrong, parsed));
  EXPECT_EQ(parsed, bitmap);
}

TEST(Slab, cellsOfAllSizesAreAlignedAndDoNotOverlap) {
  struct Cell {
    void* memory;
    std::size_t size;
    int filling;
  };
  auto const before = Scree::stats();
  std::vector<Cell> cells;
  // More than a chunk of each class, and sizes beyond the largest class.
  for (std::size_t size = 0; size <= Scree::kSlabMax + 100; size += 7) {
    for (std::size_t n = 0; n < Scree::kChunkBytes / (size + 1) / 4 + 200; ++n) {
      cells.push_back({Scree::slabAllocOrStdMalloc(size), size, static_cast<int>(cells.size() % 251)});
      std::memset(cells.back().memory, cells.back().filling, size);
    }
  }
  for (auto const& [memory, size, filling] : cells) {
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory) % Scree::kSlabStep, 0u);
    auto const* bytes = static_cast<unsigned char const*>(memory);
    ASSERT_EQ(std::count(bytes, bytes + size, filling), size) << "size " << size;
    Scree::slabFreeOrStdFree(memory, size);
  }
  EXPECT_EQ(Scree::stats().bytesInUse, before.bytesInUse);
}

#if !SCREE_PASS_THROUGH
TEST(Slab, steadyAddAndDeleteTakesNoNewChunk) {
  std::list<int, Scree::SlabAllocator<int>> list(10'000, 1);
  auto const before = Scree::stats();
  for (int round = 0; round < 10; ++round) {
    list.clear();
    list.assign(10'000, round);
  }
  EXPECT_EQ(Scree::stats().chunks, before.chunks);
  EXPECT_EQ(Scree::stats().bytesInUse, before.bytesInUse);
}
#endif

}  // namespace
