#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace Tavrin {
namespace Standalone {

/// The whole of `text` as a decimal number, with an optional leading minus sign; nothing when it
/// holds anything else, be it a blank or a plus sign, or does not fit an int. Neither depends on
/// the locale nor throws. Ports, time-outs and levels from the environment and the command line are
/// read by this, so that a slip of the finger is refused rather than read as another number.
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
