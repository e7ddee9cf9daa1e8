#include "tests/doubles/RecordText.h"

namespace Tavrin::Double {

std::string TextLine(const std::string& name, const std::string& value) {
  constexpr const char* digits = "0123456789abcdef";
  std::string line = name;
  line += value.empty() ? "" : " ";
  for (const char character : value) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= ' ' && byte <= '~') {
      line += character;
    } else {
      line += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
    }
  }
  return line + '\n';
}

}  // namespace Tavrin::Double
