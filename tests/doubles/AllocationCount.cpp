#include "tests/doubles/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

Tavrin::AllocationCount soFar;

}  // namespace

namespace Tavrin {

AllocationCount AllocationsSoFar() { return soFar; }

}  // namespace Tavrin

// The forms for arrays come down to these. Nothing measured here asks for more than the usual
// alignment.
void* operator new(std::size_t size) {
  ++soFar.allocations;
  soFar.bytes += size;
  void* const memory = std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
