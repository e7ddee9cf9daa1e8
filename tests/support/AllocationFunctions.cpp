#include "tests/support/AllocationFunctions.h"

#include <new>

namespace {

void* AllocateOrThrow(std::size_t size) {
  void* const block = Tavrin::Allocate(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
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
