#include "tests/durability/failing_memory.h"

#include <cstdlib>
#include <new>

namespace test {
namespace {

thread_local int allocations = 0, failing = 0;

}  // namespace

void failAllocation(int n) {
  allocations = 0;
  failing = n;
}

bool allocationHasFailed() { return failing > 0 && allocations >= failing; }

}  // namespace test

// All other forms call these, except those of over-aligned types.
void* operator new(std::size_t size) {
  using namespace test;
  if (++allocations == failing) throw std::bad_alloc();
  if (void* const memory = std::malloc(size > 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
