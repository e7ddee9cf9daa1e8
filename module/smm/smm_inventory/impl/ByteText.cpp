#include "module/smm/smm_inventory/impl/ByteText.h"

#include <array>
#include <charconv>

namespace Tavrin {
namespace {

void AppendHex(std::string& text, std::uint32_t number) {
  std::array<char, 8> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
  text.append(digits.data(), static_cast<std::size_t>(result.ptr - digits.data()));
}

}  // namespace

std::string Hex(std::uint32_t number) {
  std::string text;
  AppendHex(text, number);
  return text;
}

std::string DottedHex(std::uint8_t first, std::uint8_t second) {
  return Hex(first) + (second < 0x10 ? ".0" : ".") + Hex(second);
}

void ReplaceZero(std::string& reading) {
  if (reading == "0") {
    reading = "N/A";
  }
}

std::string RawRendering(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    text += static_cast<char>(byte);
    text += ' ';
  }
  return text;
}

std::string HexRendering(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  text.reserve(5 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    // Character by character, because += of a literal calls into the C++ library and += of a
    // character is inlined.
    text += '0';
    text += 'x';
    AppendHex(text, byte);
    text += ' ';
  }
  return text;
}

}  // namespace Tavrin
