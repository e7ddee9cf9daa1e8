#pragma once

#include <cstddef>

namespace Tavrin {

/// While it lives, one allocation of the thread that made it fails: the one of that number, counted
/// from 1. Whoever links this has its allocation functions replaced.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t number);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// Whether there were as many allocations.
  bool HasFailed() const;
};

}  // namespace Tavrin
