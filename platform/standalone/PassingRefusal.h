#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace Tavrin {
namespace Standalone {

/// Whether a controller that refuses with this completion code may answer the same question in a
/// moment.
inline bool MayPass(std::uint8_t completionCode) {
  constexpr std::array passing = {
      0xC0,  // busy
      0xC3,  // took too long
      0xCE,  // could not provide the answer
      0xCF,  // does not answer a repetition, which the next exchange is not
      0xD2,  // still initializing
  };
  return std::find(passing.begin(), passing.end(), completionCode) != passing.end();
}

}  // namespace Standalone
}  // namespace Tavrin
