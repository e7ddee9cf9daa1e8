#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Tavrin {

// What expanding and folding ranges of hosts share: numbers within names, as digits.

/// The most decimal digits of a number that is counted with: so many fit 64 bits, and leave room
/// for sums. A longer one can stand in a name all the same, but in no range.
constexpr std::size_t kMostDigits = 18;

/// Whether the character is 0 to 9, whatever the locale says.
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// The number that these digits stand for, leading zeros or not. There have to be 1 to kMostDigits
/// of them, and nothing else.
inline std::uint64_t ValueOfDigits(const std::string& digits) {
  std::uint64_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

/// Whether zeros fill it up to a width. A single 0 is the number.
inline bool HasLeadingZero(const std::string& digits) {
  return digits.size() > 1 && digits.front() == '0';
}

}  // namespace Tavrin
