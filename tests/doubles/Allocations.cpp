#include "tests/doubles/Allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace Tavrin {
namespace {

thread_local AllocationCount soFar;

/// A null pointer where memory is short. All bytes are set, so that nothing of an earlier block is
/// found in the one that takes its place.
void* Allocate(std::size_t size) noexcept {
  ++soFar.allocations;
  soFar.bytes += size;
  if (onNextAllocation != nullptr) {
    std::exchange(onNextAllocation, nullptr)();
  }
  const bool fails = allocationsUntilFailure > 0 && --allocationsUntilFailure == 0;
  void* const block = fails ? nullptr : std::malloc(size);
  return block == nullptr ? nullptr : std::memset(block, 0, malloc_usable_size(block));
}

void* AllocateOrThrow(std::size_t size) {
  void* const block = Allocate(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void Free(void* block) noexcept {
  if (onFree != nullptr && block != nullptr) {
    onFree(block, malloc_usable_size(block));
  }
  std::free(block);
}

}  // namespace

AllocationCount AllocationsSoFar() { return soFar; }

}  // namespace Tavrin

// Nothing that is tried here asks for more than the usual alignment. The sanitizers have all forms
// of their own, so that none may be left to come down to another.
void* operator new(std::size_t size) { return Tavrin::AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return Tavrin::AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Tavrin::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Tavrin::Allocate(size);
}
void operator delete(void* block) noexcept { Tavrin::Free(block); }
void operator delete[](void* block) noexcept { Tavrin::Free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Tavrin::Free(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Tavrin::Free(block); }
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { Tavrin::Free(block); }
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { Tavrin::Free(block); }
