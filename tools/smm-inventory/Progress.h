#pragma once

#include <string>

#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Console.h"

namespace Tavrin {

/// Turns the log's lines into what a person wants to know while the library works: how far a wait
/// is, and that something fails. The log's threshold is to be at least 3.
class Progress {
 public:
  /// Log lines up to this level are shown as they are, as -v asks; 0 shows none.
  Progress(Console& console, unsigned int shownLevel)
      : console_(console), shownLevel_(shownLevel) {}

  /// Takes one line, as the handler that SetLogLineHandler calls.
  void Take(const Standalone::LogLine& line);

  /// Between these the library repeats a request up to six times: its attempts are shown under the
  /// wait's name, and the first failure at once.
  void BeginWait(const std::string& name);
  void EndWait();

 private:
  void TakeFailure(const Standalone::LogLine& line);

  Console& console_;
  unsigned int shownLevel_;
  std::string waitName_;
  std::string shownFailure_;
};

}  // namespace Tavrin
