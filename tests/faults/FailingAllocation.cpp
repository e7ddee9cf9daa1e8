#include "tests/faults/FailingAllocation.h"

#include <cstdlib>

#include "tests/support/AllocationFunctions.h"

namespace Tavrin {
namespace {

/// How many allocations there are until one fails, that one included; none fails when it is 0.
thread_local std::size_t left = 0;

}  // namespace

FailingAllocation::FailingAllocation(std::size_t number) { left = number; }

FailingAllocation::~FailingAllocation() { left = 0; }

bool FailingAllocation::HasFailed() const { return left == 0; }

void* Allocate(std::size_t size) noexcept {
  const bool fails = left > 0 && --left == 0;
  return fails ? nullptr : std::malloc(size);
}

void Free(void* block) noexcept { std::free(block); }

}  // namespace Tavrin
