#include "com/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<int64_t> allocations = 0;
}  // namespace

int64_t vellum250::com::Allocations() { return allocations; }

void* operator new(size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
