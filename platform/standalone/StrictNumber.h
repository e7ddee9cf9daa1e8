#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace Tavrin {
namespace Standalone {

/// The whole of `text` as a decimal number, with an optional leading minus sign; nothing when it
/// holds anything else or does not fit an int.
inline std::optional<int> ParseStrictly(std::string_view text) {
  const char* const end = text.data() + text.size();
  int value{};
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) {
    return std::nullopt;
  }
  return value;
}

}  // namespace Standalone
}  // namespace Tavrin
