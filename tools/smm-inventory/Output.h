#pragma once

#include <iostream>
#include <stdexcept>

namespace Tavrin {

/// Throws where standard output did not take all that was written.
inline void RequireWholeOutput() {
  if (!std::cout) {
    throw std::runtime_error("standard output cannot be written");
  }
}

}  // namespace Tavrin
