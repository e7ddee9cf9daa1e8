#pragma once

#include <chrono>

#include "reading/Query.h"

namespace Tavrin {

/// Says when something began, by the calendar, and how long it has taken since, by a clock that
/// nobody sets. It begins with its own life.
class Stopwatch {
 public:
  [[nodiscard]] std::chrono::system_clock::time_point Begin() const { return begin_; }

  /// What is less than a millisecond is cut off.
  [[nodiscard]] std::chrono::milliseconds Duration() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 steadyBegin_);
  }

  /// Notes that the query began with the stopwatch, and ends now.
  void Stamp(QueryOutcome& outcome) const {
    outcome.askedAt = begin_;
    outcome.duration = Duration();
  }

 private:
  std::chrono::system_clock::time_point begin_ = std::chrono::system_clock::now();
  std::chrono::steady_clock::time_point steadyBegin_ = std::chrono::steady_clock::now();
};

}  // namespace Tavrin
