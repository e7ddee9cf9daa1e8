#include "tools/smm-inventory/terminal/LogLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/standalone/logger/LogControl.h"
#include "support/EscapeControlBytes.h"

namespace Tavrin {
namespace {

// What these complain about is the user's environment.
constexpr std::array<std::string_view, 2> kEnvironmentSources = {
    "platform/standalone/globalconfig/", "platform/standalone/logger/"};

constexpr std::array<std::string_view, 5> kLevelNames = {"", "error", "warning", "info", "debug"};

bool IsAboutEnvironment(std::string_view source) {
  return std::any_of(
      kEnvironmentSources.begin(), kEnvironmentSources.end(),
      [&](std::string_view folder) { return source.substr(0, folder.size()) == folder; });
}

std::string LogText(const Standalone::LogLine& line) {
  return fmt::format("[{}] {}:{}: {}", kLevelNames.at(line.level), EscapeControlBytes(line.source),
                     line.line, EscapeControlBytes(line.text));
}

}  // namespace

unsigned int LogLines::LogLevel() const {
  return std::max(shownLevel_, Standalone::LogLevel::Error);
}

void LogLines::LineWritten(const Standalone::LogLine& line) {
  if (Shows(line.level)) {
    console_.ShowLine(start_ + LogText(line));
  } else if (IsAboutEnvironment(line.source)) {
    console_.ShowLine("smm-inventory: " + EscapeControlBytes(line.text));
  }
}

}  // namespace Tavrin
