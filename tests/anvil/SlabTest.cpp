#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <list>
#include <memory>
#include <vector>

#include "platform/scree/Slab.h"

namespace {

/// A cell with its contents, so that cells that overlap are seen.
struct Cell {
  void* memory;
  std::size_t size;
  int filling;
};

Cell fill(std::size_t size, int filling) {
  auto const memory = Scree::slabAllocOrStdMalloc(size);
  std::memset(memory, filling, size);
  return {memory, size, filling};
}

bool intact(Cell const& cell) {
  auto const bytes = static_cast<unsigned char const*>(cell.memory);
  return std::all_of(bytes, bytes + cell.size, [&](unsigned char byte) { return byte == cell.filling; });
}

TEST(Slab, cellsOfAllSizesAreAlignedAndDoNotOverlap) {
  auto const before = Scree::stats();
  std::vector<Cell> cells;
  // More than a chunk of each class, and sizes beyond the largest class.
  for (std::size_t size = 0; size <= Scree::kSlabMax + 100; size += 7) {
    for (std::size_t n = 0; n < Scree::kChunkBytes / (size + 1) / 4 + 200; ++n) {
      cells.push_back(fill(size, static_cast<int>(cells.size() % 251)));
    }
  }
  for (auto const& cell : cells) {
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(cell.memory) % Scree::kSlabStep, 0u);
    ASSERT_TRUE(intact(cell)) << "size " << cell.size;
    Scree::slabFreeOrStdFree(cell.memory, cell.size);
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

struct Base : Scree::SlabAllocated {
  virtual ~Base() = default;
  int number = 0;
};
struct Derived : Base {
  std::array<char, 200> more{};
};

TEST(Slab, anObjectDeletedThroughItsBaseGoesBackToItsOwnClass) {
  auto const before = Scree::stats().bytesInUse;
  std::unique_ptr<Base> object = std::make_unique<Derived>();
  EXPECT_EQ(Scree::stats().bytesInUse - before, SCREE_PASS_THROUGH ? 0u : (sizeof(Derived) + 15) / 16 * 16);
  object.reset();
  EXPECT_EQ(Scree::stats().bytesInUse, before);
}

}  // namespace
