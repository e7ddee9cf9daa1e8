#pragma once

#include <string>

#include "reading/Observer.h"
#include "tools/smm-inventory/terminal/Console.h"

namespace Tavrin {

/// Tells a person how a pass goes on: how far a wait is, that something fails, and as much of the
/// log as was asked for.
class Progress : public Observer {
 public:
  /// Log lines up to this level are shown as they are, as -v asks: 0 shows none, else it is at
  /// least
  /// 2. `console` outlives the progress.
  Progress(Console& console, unsigned int shownLevel)
      : console_(console), shownLevel_(shownLevel) {}

  /// At least errors: those of the environment are always shown.
  [[nodiscard]] unsigned int LogLevel() const override;
  void LineWritten(const Standalone::LogLine& line) override;

  // The attempts of a wait are shown under its name, and its failures at once.
  void WaitBegins(const std::string& name) override;
  void AttemptBegins(int number, int attempts) override;
  void WaitEnds() override;
  void AttemptFailed(const Cause& cause) override;

 private:
  Console& console_;
  unsigned int shownLevel_;
  std::string waitName_;
  std::string shownFailure_;
};

}  // namespace Tavrin
