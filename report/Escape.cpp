#include "report/Escape.h"

#include <algorithm>

#include "support/EscapeControlBytes.h"

namespace Tavrin {

bool IsPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string PlainText(const std::string& text) {
  return IsPlain(text) ? text : EscapeControlBytes(text);
}

}  // namespace Tavrin
