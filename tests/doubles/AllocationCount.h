#pragma once

#include <cstdint>

namespace Tavrin {

/// What was asked of `operator new` since the program began. For programs of one thread.
struct AllocationCount {
  std::uint64_t allocations = 0;
  std::uint64_t bytes = 0;
};
AllocationCount AllocationsSoFar();

}  // namespace Tavrin
