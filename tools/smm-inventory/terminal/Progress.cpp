#include "tools/smm-inventory/terminal/Progress.h"

#include <fmt/format.h>

#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {

void Progress::WaitBegins(const std::string& name) {
  waitName_ = name;
  shownFailure_.clear();
}

void Progress::AttemptBegins(int number, int attempts) {
  if (showsAttempts_) {
    console_.ShowStatus(
        fmt::format("{}: attempt {} of {}, 3 seconds apart ...", waitName_, number, attempts));
  }
}

void Progress::WaitEnds() {
  console_.EndStatus();
  waitName_.clear();
}

void Progress::AttemptFailed(const Cause& cause) {
  const bool isShownAsALine = Shows(Standalone::LogLevel::Warning);
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
