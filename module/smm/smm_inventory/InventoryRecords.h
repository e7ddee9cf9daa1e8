#pragma once

#include <cstdint>

namespace Tavrin {

/// What the SMM reports about the enclosure it controls, from the answer to network function 0x32,
/// command 0xA8. Byte positions count from the first byte after the completion code.
struct SMMStatus {
  /// 253 (0xFD) when byte 0 of the answer is 0xFD, 254 (0xFE) for every other value of it.
  std::int32_t platformId = 0;

  /// Number of PSU slots. Platform 253: 9 when byte 13 of the answer is 0x03, otherwise 6.
  /// Platform 254: 2.
  std::int32_t psuSlotCount = 0;
};

}  // namespace Tavrin
