#include "tools/smm-inventory/terminal/Capabilities.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace Tavrin {

bool IsTerminal(int descriptor) { return isatty(descriptor) == 1; }

bool CanMoveCursor(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  return IsTerminal(descriptor) && terminal != nullptr && std::string_view(terminal) != "dumb";
}

}  // namespace Tavrin
