#pragma once

#include <string>

#include "tools/smm-inventory/terminal/LogLines.h"

namespace Tavrin {

/// Tells a person how the pass over one enclosure goes on: how far a wait is, that something fails,
/// and as much of the log as was asked for.
class Progress : public LogLines {
 public:
  /// `console` outlives the progress.
  Progress(Console& console, unsigned int shownLevel)
      : LogLines(console, shownLevel), console_(console) {}

  // The attempts of a wait are shown under its name, and its failures at once.
  void WaitBegins(const std::string& name) override;
  void AttemptBegins(int number, int attempts) override;
  void WaitEnds() override;
  void AttemptFailed(const Cause& cause) override;

 private:
  Console& console_;
  std::string waitName_;
  std::string shownFailure_;
};

}  // namespace Tavrin
