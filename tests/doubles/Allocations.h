#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tavrin {

// A program that links Allocations.cpp has operator new and operator delete replaced, which do
// beside their work what is asked for here.

/// What the calling thread has asked of `operator new` since it began.
struct AllocationCount {
  std::uint64_t allocations = 0;
  std::uint64_t bytes = 0;
};
AllocationCount AllocationsSoFar();

/// While it lives, one allocation of the thread that made it fails: the one of that number, counted
/// from 1.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t number);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// Whether there were as many allocations.
  bool HasFailed() const;
};

/// Looks into every block of memory that the program and its libraries give back through operator
/// delete, for as long as it lives and before the block is gone. One at a time, in programs of one
/// thread.
class FreedMemory {
 public:
  /// `secret` stays where it is meanwhile; its parts of eight bytes are what is looked for.
  explicit FreedMemory(std::string_view secret);
  ~FreedMemory();
  FreedMemory(const FreedMemory&) = delete;
  FreedMemory& operator=(const FreedMemory&) = delete;

  void LookInto(const void* block, std::size_t size);

  /// How many blocks were looked into, and how many of them held a part of the secret.
  std::size_t BlockCount() const { return blockCount_; }
  std::size_t TraceCount() const { return traceCount_; }

 private:
  std::string_view secret_;
  std::size_t blockCount_ = 0;
  std::size_t traceCount_ = 0;
};

}  // namespace Tavrin
