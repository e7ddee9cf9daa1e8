#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Tavrin::Fuzz {

/// Ends the fuzzer, which then keeps the input, when something does not hold that the code under
/// test promises. `promise` says what should have been.
inline void Require(bool holds, const std::string& promise) {
  if (!holds) {
    static_cast<void>(std::fprintf(stderr, "Broken promise: %s\n", promise.c_str()));
    std::abort();
  }
}

}  // namespace Tavrin::Fuzz
