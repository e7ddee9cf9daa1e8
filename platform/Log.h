#pragma once

#include <memory>
#include <ostream>
#include <string>

namespace Tavrin {

/// One log line: its text is what was written into Stream(), and it is complete, and handed on,
/// when the object is destroyed. Levels: 1 failures, 2 warnings, 3 progress, 4 debug.
class Log {
 public:
  Log(unsigned int level, const std::string& sourcePath, unsigned int line);
  ~Log();

  std::ostream& Stream();

  /// The threshold: lines of a level above it are not to be written. 0 switches all off.
  static unsigned int GetMinLogLevel();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
