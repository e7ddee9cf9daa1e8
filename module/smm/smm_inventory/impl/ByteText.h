#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin {

/// Texts that the library logs and returns. None depends on the process's locale.

/// Lower-case hexadecimal without prefix and without leading zeros; "0" for 0.
std::string Hex(std::uint32_t number);

/// The two halves of a version: `first` in lower-case hexadecimal without leading zeros, ".", and
/// `second` in lower-case hexadecimal with two digits.
std::string DottedHex(std::uint8_t first, std::uint8_t second);

/// Puts "N/A" in place of "0", which is how an SMM says that it has no reading, and leaves every
/// other text.
void ReplaceZero(std::string& reading);

/// Each byte as one character, whatever it is, and one blank after it.
std::string RawRendering(const std::vector<std::uint8_t>& bytes);

/// Each byte as "0x", lower-case hexadecimal without leading zeros, and one blank.
std::string HexRendering(const std::vector<std::uint8_t>& bytes);

}  // namespace Tavrin
