#include "tests/secrets/Traces.h"

#include <array>
#include <cctype>
#include <cstdint>
#include <regex>
#include <string_view>

namespace Tavrin {
namespace {

constexpr std::size_t kPartLength = 8;

std::string Hexadecimal(const std::string& bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<std::uint8_t>(byte);
    text += digits[value >> 4U];
    text += digits[value & 0xFU];
  }
  return text;
}

/// The characters of a base64 text that `bytes` alone decide, when `offset` other bytes come before
/// them in their group of three.
std::string Base64Core(const std::string& bytes, std::size_t offset) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  std::uint32_t bits = 0;
  std::size_t bitCount = 0;
  for (const char byte : std::string(offset, '\0') + bytes) {
    bits = (bits << 8U) | static_cast<std::uint8_t>(byte);
    bitCount += 8;
    while (bitCount >= 6) {
      bitCount -= 6;
      text += digits[(bits >> bitCount) & 0x3FU];
    }
  }
  constexpr std::array<std::size_t, 3> foreignCharacters = {0, 2, 3};
  return text.substr(foreignCharacters.at(offset));
}

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// The text without anything that programs put between or before bytes when they show them.
std::string Joined(const std::string& text) {
  static const std::regex between(R"(0[xX]|\\x|[^0-9A-Za-z+/])");
  return std::regex_replace(text, between, "");
}

std::string Lower(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

}  // namespace

std::vector<std::string> TracesOf(const std::string& secret, const std::string& text) {
  const std::string joined = Joined(text);
  const std::string lower = Lower(joined);
  std::vector<std::string> traces;
  for (std::size_t begin = 0; begin + kPartLength <= secret.size(); ++begin) {
    const std::string part = secret.substr(begin, kPartLength);
    if (Holds(text, part) || Holds(joined, part)) {
      traces.push_back("text of " + part);
    }
    if (Holds(lower, Hexadecimal(part))) {
      traces.push_back("hexadecimal of " + part);
    }
    for (std::size_t offset = 0; offset < 3; ++offset) {
      if (Holds(joined, Base64Core(part, offset))) {
        traces.push_back("base64 of " + part);
      }
    }
  }
  return traces;
}

}  // namespace Tavrin
