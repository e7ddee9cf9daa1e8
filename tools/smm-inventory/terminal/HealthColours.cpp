#include "tools/smm-inventory/terminal/HealthColours.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "tools/smm-inventory/terminal/Capabilities.h"

namespace Tavrin {
namespace {

/// By ECMA-48: red, yellow and magenta; what is well has none.
std::string_view ColourOf(Severity severity) {
  switch (severity) {
    case Severity::Critical:
      return "\x1b[31m";
    case Severity::Warning:
      return "\x1b[33m";
    case Severity::Unknown:
      return "\x1b[35m";
    default:
      return "";
  }
}

}  // namespace

bool HasColours() {
  const char* const noColour = std::getenv("NO_COLOR");
  const bool isUnwanted = noColour != nullptr && *noColour != '\0';
  return CanMoveCursor(STDOUT_FILENO) && !isUnwanted;
}

std::string HealthOnTerminal(const std::vector<HealthLine>& lines, bool hasColours) {
  std::string text;
  for (const HealthLine& line : lines) {
    const std::string_view colour = hasColours ? ColourOf(line.severity) : "";
    text += line.before;
    text += colour;
    text += line.word;
    text += colour.empty() ? "" : "\x1b[0m";
    text += line.after + '\n';
  }
  return text;
}

}  // namespace Tavrin
