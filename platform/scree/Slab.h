#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <type_traits>

#if defined(TESSEL_SANITIZE) || defined(__SANITIZE_ADDRESS__)
#define SCREE_PASS_THROUGH 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SCREE_PASS_THROUGH 1
#endif
#endif
#ifndef SCREE_PASS_THROUGH
#define SCREE_PASS_THROUGH 0
#endif

/// Slab allocation for the small objects of entities and table entries.
///
/// Sizes are rounded up to a multiple of 16 bytes; each such class, up to 512 bytes, has a list of free cells that were
/// cut from chunks of 64 KiB. Cells are aligned to 16 bytes. A cell that is freed is the next one to be handed out; a
/// chunk stays with its class for the life of the process, so that steady adding and removing never reaches `malloc`.
///
/// One thread only: the lists have no lock, and there is one set of them per process, in the platform library.
/// Under the address sanitizer every call is passed to `malloc` and `free`, so that faults and leaks show.
namespace Scree {

inline constexpr std::size_t kSlabStep = 16;  ///< Distance between two size classes, and the alignment of a cell.
inline constexpr std::size_t kSlabMax = 512;  ///< The largest size that has a class.
inline constexpr std::size_t kChunkBytes = 1 << 16;  ///< What one refill takes from `malloc`.

/// Memory in use, summed over all classes. Zero throughout under the address sanitizer.
struct Stats {
  std::size_t bytesInChunks = 0;  ///< Taken from `malloc`.
  std::size_t bytesInUse = 0;     ///< Handed out and not freed yet, in whole cells.
  std::size_t chunks = 0;
};

/// Counts by walking the free lists, so that allocation itself counts nothing. For reports, not for hot paths.
Stats stats();

namespace detail {

struct FreeCell {
  FreeCell* next;
};

/// Heads of the free lists by size class; class c serves sizes up to 16 c bytes, class 0 the size 0.
extern std::array<FreeCell*, kSlabMax / kSlabStep + 1> freeCells;

/// Cuts a new chunk into cells of the class and takes the first. REQUIRES: the free list of the class is empty.
/// Throws std::bad_alloc.
void* refill(std::size_t sizeClass);

/// `malloc` that throws std::bad_alloc on failure.
void* stdMalloc(std::size_t size);

constexpr std::size_t sizeClass(std::size_t size) { return (size + kSlabStep - 1) / kSlabStep; }

}  // namespace detail

/// Memory for `size` bytes, never null; throws std::bad_alloc. REQUIRES: size <= kSlabMax.
[[nodiscard]] inline void* slabAlloc(std::size_t size) {
  assert(size <= kSlabMax);
#if SCREE_PASS_THROUGH
  return detail::stdMalloc(size);
#else
  auto const sizeClass = detail::sizeClass(size);
  auto const cell = detail::freeCells[sizeClass];
  if (!cell) [[unlikely]] {
    return detail::refill(sizeClass);
  }
  detail::freeCells[sizeClass] = cell->next;
  return cell;
#endif
}

/// Frees memory of `slabAlloc`. REQUIRES: ptr is not null, size is the one that was requested.
inline void slabFree(void* ptr, [[maybe_unused]] std::size_t size) noexcept {
  assert(size <= kSlabMax);
#if SCREE_PASS_THROUGH
  std::free(ptr);
#else
  auto& head = detail::freeCells[detail::sizeClass(size)];
  head = new (ptr) detail::FreeCell{head};
#endif
}

/// As `slabAlloc`, for sizes that can be large: those beyond `kSlabMax` are allocated by `malloc`.
[[nodiscard]] inline void* slabAllocOrStdMalloc(std::size_t size) {
  return size <= kSlabMax ? slabAlloc(size) : detail::stdMalloc(size);
}

/// Frees memory of `slabAllocOrStdMalloc`. REQUIRES: ptr is not null, size is the one that was requested.
inline void slabFreeOrStdFree(void* ptr, std::size_t size) noexcept {
  if (size <= kSlabMax) return slabFree(ptr, size);
  std::free(ptr);
}

/// Base of a class whose objects live in the slab. Derived classes of any size may be deleted through a pointer to a
/// base that has a virtual destructor. Over-aligned classes are refused at compile time; arrays are allocated as usual.
class SlabAllocated {
 public:
  static void* operator new(std::size_t size) { return slabAllocOrStdMalloc(size); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new(std::size_t, std::align_val_t) = delete;
  static void operator delete(void* ptr, std::size_t size) noexcept {
    if (ptr) slabFreeOrStdFree(ptr, size);
  }
  static void operator delete(void*, void*) noexcept {}

 protected:
  SlabAllocated() = default;
  ~SlabAllocated() = default;
  SlabAllocated(SlabAllocated const&) = default;
  SlabAllocated& operator=(SlabAllocated const&) = default;
};

/// Standard allocator over the slab; large arrays are allocated by `malloc`. All are equal.
template <typename T>
class SlabAllocator {
 public:
  using value_type = T;
  using is_always_equal = std::true_type;
  using propagate_on_container_move_assignment = std::true_type;

  SlabAllocator() = default;
  template <typename U>
  SlabAllocator(SlabAllocator<U> const&) noexcept {}

  [[nodiscard]] T* allocate(std::size_t n) {
    static_assert(alignof(T) <= kSlabStep, "the slab aligns to 16 bytes");
    if (n > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(slabAllocOrStdMalloc(n * sizeof(T)));
  }
  void deallocate(T* ptr, std::size_t n) noexcept { slabFreeOrStdFree(ptr, n * sizeof(T)); }

  friend bool operator==(SlabAllocator const&, SlabAllocator const&) { return true; }
};

}  // namespace Scree
