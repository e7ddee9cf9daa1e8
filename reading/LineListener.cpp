#include "reading/LineListener.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace Tavrin {
namespace {

// The levels of the log: the client's failures are warnings, the attempts of a wait are info lines.

// The library tells of its attempts in its log alone, whose words are part of its interface.
constexpr int kAttempts = 6;
// What begins an attempt of the status read and one of the PSU selection; its number follows.
constexpr std::array<std::string_view, 2> kAttemptTexts = {"Try to get SMM status, retry ",
                                                           "Try to get PSU status, start retry "};
constexpr std::string_view kClientSource = "platform/standalone/ipmi_client/";

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

/// The number of the attempt that the line begins; 0 when it begins none.
int AttemptNumber(std::string_view text) {
  int number = 0;
  for (const std::string_view start : kAttemptTexts) {
    if (StartsWith(text, start)) {
      std::from_chars(text.data() + start.size(), text.data() + text.size(), number);
    }
  }
  return number;
}

bool IsFailureOfTheClient(const Standalone::LogLine& line) {
  return line.level <= Standalone::LogLevel::Warning && StartsWith(line.source, kClientSource);
}

}  // namespace

unsigned int LineListener::Threshold() const {
  return std::max(observer_.LogLevel(), Standalone::LogLevel::Info);
}

void LineListener::Take(const Standalone::LogLine& line) {
  guard_.Look();
  if (line.level <= observer_.LogLevel()) {
    observer_.LineWritten(line);
  }
  if (IsFailureOfTheClient(line)) {
    // The line's own words advise in terms of the configuration.
    observer_.AttemptFailed(CauseOf(Standalone::GetLastExchange()));
  }
  if (const int number = AttemptNumber(line.text); number > 0) {
    observer_.AttemptBegins(number, kAttempts);
  }
}

}  // namespace Tavrin
