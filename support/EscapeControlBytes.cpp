#include "support/EscapeControlBytes.h"

namespace Tavrin {

std::string EscapeControlBytes(const std::string& text) {
  constexpr const char* hexDigits = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(text.size());
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '\\') {
      escaped += "\\\\";
    } else if (character == '\n') {
      escaped += "\\n";
    } else if (character == '\r') {
      escaped += "\\r";
    } else if (character == '\t') {
      escaped += "\\t";
    } else if (byte < 0x20 || byte > 0x7E) {
      escaped += {'\\', 'x', hexDigits[byte >> 4U], hexDigits[byte & 0xFU]};
    } else {
      escaped += character;
    }
  }
  return escaped;
}

}  // namespace Tavrin
