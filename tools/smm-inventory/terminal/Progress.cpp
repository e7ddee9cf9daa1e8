#include "tools/smm-inventory/terminal/Progress.h"

#include <fmt/format.h>

#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {

namespace {

bool IsTriedAgain(Standalone::FailureCause kind) {
  return !IsLoginRefused(kind) && kind != Standalone::FailureCause::TimeOver &&
         kind != Standalone::FailureCause::Stopped;
}

}  // namespace

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
  const bool isShownAsALine = Shows(Standalone::LogLevel::Warning);
  if (waitName_.empty() || isShownAsALine || !IsTriedAgain(cause.kind)) {
    return;
  }
  // Attempts mostly fail alike: the same words are said once.
  if (cause.words != shownFailure_) {
    console_.ShowLine(cause.words + "; still trying");
    shownFailure_ = cause.words;
  }
}

}  // namespace Tavrin
