#pragma once

#include <cstdint>
#include <string>

namespace Tavrin {
namespace Standalone {

/// The byte as 0x and two lowercase hexadecimal digits, whatever the global locale.
inline std::string HexByte(std::uint8_t byte) {
  constexpr const char* digits = "0123456789abcdef";
  return {'0', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
}

}  // namespace Standalone
}  // namespace Tavrin
