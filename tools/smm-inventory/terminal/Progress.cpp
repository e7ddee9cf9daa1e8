#include "tools/smm-inventory/terminal/Progress.h"

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

unsigned int Progress::LogLevel() const {
  return std::max(shownLevel_, Standalone::LogLevel::Error);
}

void Progress::LineWritten(const Standalone::LogLine& line) {
  if (line.level <= shownLevel_) {
    console_.ShowLine(LogText(line));
  } else if (IsAboutEnvironment(line.source)) {
    console_.ShowLine("smm-inventory: " + EscapeControlBytes(line.text));
  }
}

void Progress::WaitBegins(const std::string& name) {
  waitName_ = name;
  shownFailure_.clear();
}

void Progress::AttemptBegins(int number, int attempts) {
  console_.ShowStatus(
      fmt::format("{}: attempt {} of {}, 3 seconds apart ...", waitName_, number, attempts));
}

void Progress::WaitEnds() {
  console_.EndStatus();
  waitName_.clear();
}

void Progress::AttemptFailed(const Cause& cause) {
  const bool isShownAsALine = shownLevel_ >= Standalone::LogLevel::Warning;
  if (waitName_.empty() || isShownAsALine || IsLoginRefused(cause.kind)) {
    return;
  }
  // Attempts mostly fail alike: the same words are said once.
  if (cause.words != shownFailure_) {
    console_.ShowLine(cause.words + "; still trying");
    shownFailure_ = cause.words;
  }
}

}  // namespace Tavrin
