#include "tools/smm-inventory/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace Tavrin {
namespace {

constexpr unsigned int kWarning = 2;
constexpr int kStatusAttempts = 6;
constexpr std::string_view kAttemptText = "Try to get SMM status, retry ";
constexpr std::string_view kClientSource = "platform/standalone/ipmi_client/";
// What these complain about is the user's environment.
constexpr std::array<std::string_view, 2> kEnvironmentSources = {
    "platform/standalone/globalconfig/", "platform/standalone/logger/"};

constexpr std::array<std::string_view, 5> kLevelNames = {"", "error", "warning", "info", "debug"};

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

bool IsAboutEnvironment(const Standalone::LogLine& line) {
  return std::any_of(kEnvironmentSources.begin(), kEnvironmentSources.end(),
                     [&](std::string_view source) { return StartsWith(line.source, source); });
}

std::string LogText(const Standalone::LogLine& line) {
  return fmt::format("[{}] {}:{}: {}", kLevelNames.at(line.level),
                     Standalone::EscapeControlBytes(line.source), line.line,
                     Standalone::EscapeControlBytes(line.text));
}

}  // namespace

void Progress::Take(const Standalone::LogLine& line) {
  if (line.level <= shownLevel_) {
    console_.ShowLine(LogText(line));
  } else if (IsAboutEnvironment(line)) {
    console_.ShowLine("smm-inventory: " + Standalone::EscapeControlBytes(line.text));
  }
  if (line.level <= kWarning) {
    TakeCause(line);
  } else if (StartsWith(line.text, kAttemptText)) {
    ForgetCause();
    TakeAttempt(line.text);
  }
}

void Progress::BeginWait(const std::string& name) {
  waitName_ = name;
  shownCause_.clear();
  ForgetCause();
}

void Progress::EndWait() {
  console_.EndStatus();
  waitName_.clear();
}

void Progress::ForgetCause() {
  clientCause_.clear();
  otherCause_.clear();
}

void Progress::TakeCause(const Standalone::LogLine& line) {
  const std::string cause = Standalone::EscapeControlBytes(line.text);
  if (!StartsWith(line.source, kClientSource)) {
    // What follows the first complaint is its consequence.
    otherCause_ = otherCause_.empty() ? cause : otherCause_;
    return;
  }
  clientCause_ = cause;
  // Attempts mostly fail alike: the same words are said once, and not again beside the log line.
  if (!waitName_.empty() && cause != shownCause_ && line.level > shownLevel_) {
    console_.ShowLine(cause + "; still trying");
    shownCause_ = cause;
  }
}

void Progress::TakeAttempt(const std::string& text) {
  const std::string_view number = std::string_view(text).substr(
      kAttemptText.size(), text.find(' ', kAttemptText.size()) - kAttemptText.size());
  console_.ShowStatus(
      fmt::format("{}: attempt {} of {}, 3 seconds apart ...", waitName_, number, kStatusAttempts));
}

}  // namespace Tavrin
