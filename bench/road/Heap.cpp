#include "bench/road/Heap.h"

#include <malloc.h>

#include <cstdlib>

#include "platform/scree/Slab.h"

// The allocator's own entry points; the functions below replace them for all libraries of the program.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace RoadBench {
namespace {

Heap heap;

void* counted(void* memory) {
  ++heap.calls;
  heap.bytes += malloc_usable_size(memory);
  return memory;
}

}  // namespace

Heap Heap::now() {
  auto const slabs = Scree::stats();
  auto now = heap;
  now.bytes -= slabs.bytesInChunks - slabs.bytesInUse;
  return now;
}

}  // namespace RoadBench

extern "C" {
void* malloc(std::size_t size) { return RoadBench::counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) { return RoadBench::counted(__libc_calloc(count, size)); }
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return RoadBench::counted(__libc_memalign(alignment, size));
}
void* realloc(void* memory, std::size_t size) {
  RoadBench::heap.bytes -= malloc_usable_size(memory);
  return RoadBench::counted(__libc_realloc(memory, size));
}
void free(void* memory) {
  RoadBench::heap.bytes -= malloc_usable_size(memory);
  __libc_free(memory);
}
}
