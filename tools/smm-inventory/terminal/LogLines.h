#pragma once

#include <string>

#include "reading/Observer.h"
#include "tools/smm-inventory/terminal/Console.h"

namespace Tavrin {

/// Shows as much of the log as was asked for.
class LogLines : public Observer {
 public:
  /// Lines up to this level are shown as they are, as -v asks: 0 shows none, else it is at least 2.
  /// `console` outlives this.
  LogLines(Console& console, unsigned int shownLevel)
      : console_(console), shownLevel_(shownLevel) {}

  /// Begins each line from now on with what people call the enclosure that it is about.
  void TellAbout(const std::string& enclosure) { start_ = enclosure + ": "; }

  /// At least errors: those of the environment are always shown.
  [[nodiscard]] unsigned int LogLevel() const override;
  void LineWritten(const Standalone::LogLine& line) override;

 protected:
  [[nodiscard]] bool Shows(unsigned int level) const { return level <= shownLevel_; }

 private:
  Console& console_;
  unsigned int shownLevel_;
  std::string start_;
};

}  // namespace Tavrin
