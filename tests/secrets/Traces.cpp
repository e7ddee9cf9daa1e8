#include "tests/secrets/Traces.h"

#include <cstdint>
#include <string_view>

namespace Tavrin {
namespace {

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The digits that the bytes have at so many bits a digit, whole ones alone.
std::string Encoded(const std::string& bytes, std::string_view digits, std::size_t bitsEach) {
  std::string text;
  std::uint32_t bits = 0;
  std::size_t bitCount = 0;
  for (const char byte : bytes) {
    bits = (bits << 8U) | static_cast<std::uint8_t>(byte);
    for (bitCount += 8; bitCount >= bitsEach;) {
      bitCount -= bitsEach;
      text += digits[(bits >> bitCount) & (digits.size() - 1)];
    }
  }
  return text;
}

/// The characters of a base64 text that `bytes` alone decide, when `offset` other bytes come before
/// them in their group of three.
std::string Base64Core(const std::string& bytes, std::size_t offset) {
  const std::size_t foreignCharacters = offset == 0 ? 0 : offset + 1;
  return Encoded(std::string(offset, '\0') + bytes, kBase64Digits, 6).substr(foreignCharacters);
}

/// The text without anything that programs put between or before bytes when they show them.
std::string Joined(const std::string& text) {
  std::string joined;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const std::string_view pair = std::string_view(text).substr(index, 2);
    if (pair == "0x" || pair == "0X" || pair == "\\x") {
      ++index;
    } else if (kBase64Digits.find(text[index]) != std::string_view::npos) {
      joined += text[index];
    }
  }
  return joined;
}

}  // namespace

std::vector<std::string> TracesOf(const std::string& secret, const std::string& text) {
  constexpr std::size_t kPartLength = 8;
  const std::string joined = Joined(text);
  std::vector<std::string> traces;
  for (std::size_t begin = 0; begin + kPartLength <= secret.size(); ++begin) {
    const std::string part = secret.substr(begin, kPartLength);
    const auto look = [&](const std::string& kind, const std::string& rendering) {
      if (text.find(rendering) != std::string::npos ||
          joined.find(rendering) != std::string::npos) {
        traces.push_back(kind + " of " + part);
      }
    };
    look("text", part);
    look("hexadecimal", Encoded(part, "0123456789abcdef", 4));
    look("hexadecimal", Encoded(part, "0123456789ABCDEF", 4));
    for (std::size_t offset = 0; offset < 3; ++offset) {
      look("base64", Base64Core(part, offset));
    }
  }
  return traces;
}

}  // namespace Tavrin
