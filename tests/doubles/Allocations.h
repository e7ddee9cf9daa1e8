#pragma once

#include <cstddef>
#include <cstdint>

namespace Tavrin {

// A program that links Allocations.cpp has operator new and operator delete replaced, which do
// beside their work what is asked for here.

/// What the calling thread has asked of `operator new` since it began.
struct AllocationCount {
  std::uint64_t allocations = 0;
  std::uint64_t bytes = 0;
};
AllocationCount AllocationsSoFar();

/// How many allocations of the calling thread there are until one fails, that one included; none
/// fails when it is 0.
inline thread_local std::size_t allocationsUntilFailure = 0;

/// Where set, happens once in the middle of the calling thread's next allocation, as what another
/// thread does meanwhile would.
inline thread_local void (*onNextAllocation)() = nullptr;

/// Where set, gets every block of memory that the program and its libraries give back through
/// operator delete, before the block is gone. For programs of one thread.
inline void (*onFree)(const void* block, std::size_t size) = nullptr;

}  // namespace Tavrin
