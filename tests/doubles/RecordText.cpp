#include "tests/doubles/RecordText.h"

namespace Tavrin::Double {

std::string ValueText(const std::string& value) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text;
  for (const char character : value) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= ' ' && byte <= '~') {
      text += character;
    } else {
      text += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
    }
  }
  return text;
}

std::string TextLine(const std::string& name, const std::string& value) {
  return name + (value.empty() ? "" : " ") + value + '\n';
}

}  // namespace Tavrin::Double
