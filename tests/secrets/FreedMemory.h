#pragma once

#include <cstddef>
#include <string_view>

namespace Tavrin {

/// Looks into every block of memory that the program and its libraries give back through operator
/// delete, for as long as it lives and before the block is gone. A program that links this has
/// allocation functions of its own, which set every byte of a block when they hand it out, so that
/// there is nothing undefined to look at. One at a time.
class FreedMemory {
 public:
  /// `secret` stays where it is meanwhile; its parts of eight bytes are what is looked for.
  explicit FreedMemory(std::string_view secret);
  ~FreedMemory();
  FreedMemory(const FreedMemory&) = delete;
  FreedMemory& operator=(const FreedMemory&) = delete;

  /// How many blocks were looked into, and how many of them held a part of the secret.
  std::size_t BlockCount() const;
  std::size_t TraceCount() const;
};

}  // namespace Tavrin
