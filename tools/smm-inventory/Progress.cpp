#include "tools/smm-inventory/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "reading/Cause.h"

namespace Tavrin {
namespace {

constexpr unsigned int kWarning = 2;
constexpr int kAttempts = 6;
// What begins an attempt of the status read and one of the PSU selection; its number follows.
constexpr std::array<std::string_view, 2> kAttemptTexts = {"Try to get SMM status, retry ",
                                                           "Try to get PSU status, start retry "};
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

/// The number of the attempt that the line begins; empty when it begins none.
std::string AttemptNumber(const std::string& text) {
  for (const std::string_view start : kAttemptTexts) {
    if (StartsWith(text, start)) {
      return text.substr(start.size(), text.find(' ', start.size()) - start.size());
    }
  }
  return "";
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
    TakeFailure(line);
    return;
  }
  const std::string attempt = AttemptNumber(line.text);
  if (!attempt.empty()) {
    console_.ShowStatus(
        fmt::format("{}: attempt {} of {}, 3 seconds apart ...", waitName_, attempt, kAttempts));
  }
}

void Progress::BeginWait(const std::string& name) {
  waitName_ = name;
  shownFailure_.clear();
}

void Progress::EndWait() {
  console_.EndStatus();
  waitName_.clear();
}

void Progress::TakeFailure(const Standalone::LogLine& line) {
  const bool isShown = line.level <= shownLevel_;
  if (waitName_.empty() || isShown || !StartsWith(line.source, kClientSource)) {
    return;
  }
  // The line itself advises in terms of the configuration, which are not those of the tool.
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  // Attempts mostly fail alike: the same words are said once.
  if (!IsLoginRefused(exchange.cause) && exchange.words != shownFailure_) {
    console_.ShowLine(exchange.words + "; still trying");
    shownFailure_ = exchange.words;
  }
}

}  // namespace Tavrin
