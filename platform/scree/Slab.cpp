#include "platform/scree/Slab.h"

#include <algorithm>
#include <new>

namespace Scree {

namespace {

/// A chunk begins with one cache line of its own, so that cells of 64 bytes do not straddle two.
constexpr std::size_t kCacheLine = 64;

struct alignas(kCacheLine) ChunkHeader {
  ChunkHeader* next;  ///< Keeps every chunk reachable, for leak checkers.
  std::size_t bytesInCells;
};

ChunkHeader* chunkList = nullptr;

std::size_t cellBytes(std::size_t sizeClass) { return std::max<std::size_t>(sizeClass, 1) * kSlabStep; }

ChunkHeader* newChunk() {
  auto const memory = std::aligned_alloc(kCacheLine, kChunkBytes);
  if (!memory) throw std::bad_alloc();
  return chunkList = new (memory) ChunkHeader{chunkList, 0};
}

}  // namespace

namespace detail {

constinit std::array<FreeCell*, kSlabMax / kSlabStep + 1> freeCells{};

void* refill(std::size_t sizeClass) {
  auto const chunk = newChunk();
  auto const bytes = cellBytes(sizeClass);
  auto const count = (kChunkBytes - sizeof(ChunkHeader)) / bytes;
  chunk->bytesInCells = count * bytes;
  // From the last to the first, so that neighbours in time become neighbours in memory.
  auto const first = reinterpret_cast<std::byte*>(chunk + 1);
  FreeCell* head = nullptr;
  for (auto i = count; i-- > 1;) head = new (first + i * bytes) FreeCell{head};
  freeCells[sizeClass] = head;
  return first;
}

void* stdMalloc(std::size_t size) {
  auto const memory = std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace detail

Stats stats() {
  Stats result;
  for (auto chunk = chunkList; chunk; chunk = chunk->next) {
    ++result.chunks;
    result.bytesInChunks += kChunkBytes;
    result.bytesInUse += chunk->bytesInCells;
  }
  for (std::size_t sizeClass = 0; sizeClass < detail::freeCells.size(); ++sizeClass) {
    for (auto cell = detail::freeCells[sizeClass]; cell; cell = cell->next) result.bytesInUse -= cellBytes(sizeClass);
  }
  return result;
}

}  // namespace Scree
