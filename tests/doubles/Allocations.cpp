#include "tests/doubles/Allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace Tavrin {
namespace {

thread_local AllocationCount soFar;

/// How many allocations there are until one fails, that one included; none fails when it is 0.
thread_local std::size_t left = 0;

FreedMemory* onlooker = nullptr;

/// A null pointer where memory is short. All bytes are set, so that nothing of an earlier block is
/// found in the one that takes its place.
void* Allocate(std::size_t size) noexcept {
  ++soFar.allocations;
  soFar.bytes += size;
  const bool fails = left > 0 && --left == 0;
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
  if (onlooker != nullptr && block != nullptr) {
    onlooker->LookInto(block, malloc_usable_size(block));
  }
  std::free(block);
}

}  // namespace

AllocationCount AllocationsSoFar() { return soFar; }

FailingAllocation::FailingAllocation(std::size_t number) { left = number; }

FailingAllocation::~FailingAllocation() { left = 0; }

bool FailingAllocation::HasFailed() const { return left == 0; }

FreedMemory::FreedMemory(std::string_view secret) : secret_(secret) { onlooker = this; }

FreedMemory::~FreedMemory() { onlooker = nullptr; }

void FreedMemory::LookInto(const void* block, std::size_t size) {
  constexpr std::size_t kPartLength = 8;
  ++blockCount_;
  bool isTrace = false;
  for (std::size_t begin = 0; begin + kPartLength <= secret_.size(); ++begin) {
    isTrace = isTrace || memmem(block, size, &secret_[begin], kPartLength) != nullptr;
  }
  traceCount_ += isTrace ? 1 : 0;
}

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
