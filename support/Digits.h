#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Tavrin {

/// The most decimal digits of a number within a host's name that is counted with: so many fit 64
/// bits, and leave room for sums.
constexpr std::size_t kMostDigits = 18;

/// Whatever the locale says.
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// The number that at most kMostDigits digits, and nothing else, stand for.
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
