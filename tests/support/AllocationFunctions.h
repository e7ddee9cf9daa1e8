#pragma once

#include <cstddef>

namespace Tavrin {

// A program that links AllocationFunctions.cpp has its allocation functions replaced: all forms of
// operator new and operator delete come down to these two, which it defines.

/// A null pointer where memory is short: what throws does so by itself.
void* Allocate(std::size_t size) noexcept;
void Free(void* block) noexcept;

}  // namespace Tavrin
