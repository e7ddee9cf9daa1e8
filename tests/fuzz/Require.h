#pragma once

#include <algorithm>
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

/// Printable ASCII only.
inline bool IsPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// At least one digit, and nothing else.
inline bool IsDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// A number from 0 to `largest` in plain decimal, without leading zeros.
inline bool IsNumber(const std::string& text, unsigned long largest) {
  const unsigned long number = std::strtoul(text.c_str(), nullptr, 10);
  return number <= largest && std::to_string(number) == text;
}

}  // namespace Tavrin::Fuzz
