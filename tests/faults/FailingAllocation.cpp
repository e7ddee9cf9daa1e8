#include "tests/faults/FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace Tavrin {
namespace {

/// How many allocations there are until one fails, that one included; none fails when it is 0.
thread_local std::size_t left = 0;

void* Allocate(std::size_t size) {
  const bool fails = left > 0 && --left == 0;
  return fails ? nullptr : std::malloc(size);
}

void* AllocateOrThrow(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

FailingAllocation::FailingAllocation(std::size_t number) { left = number; }

FailingAllocation::~FailingAllocation() { left = 0; }

bool FailingAllocation::HasFailed() const { return left == 0; }

}  // namespace Tavrin

void* operator new(std::size_t size) { return Tavrin::AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return Tavrin::AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Tavrin::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Tavrin::Allocate(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { std::free(memory); }
