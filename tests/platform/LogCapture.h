#pragma once

#include <vector>

#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {

/// Collects the lines that are written while it lives, with `threshold` in force.
class LogCapture {
 public:
  explicit LogCapture(unsigned int threshold = 4) {
    Standalone::SetMinLogLevel(threshold);
    Standalone::SetLogLineHandler(
        [this](const Standalone::LogLine& line) { lines.push_back(line); });
  }
  ~LogCapture() {
    Standalone::SetLogLineHandler({});
    Standalone::SetMinLogLevel(1);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<Standalone::LogLine> lines;
};

}  // namespace Tavrin
