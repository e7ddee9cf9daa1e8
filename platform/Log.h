#pragma once

#include <memory>
#include <ostream>
#include <string>

namespace Tavrin {

/// One log line: its text is what was written into Stream(), and it is complete, and handed on,
/// when the object is destroyed. Levels: 1 failures, 2 warnings, 3 progress, 4 debug.
class Log {
 public:
  /// Begins a line that the source file of this path writes, in its line of this number. Whether
  /// the level is within the threshold, the writer has looked before.
  Log(unsigned int level, const std::string& sourcePath, unsigned int line);

  /// Hands the line on.
  ~Log();

  /// Takes the text. It may hold any bytes, those of an answer among them; whoever shows lines
  /// escapes what could drive a terminal. The stream ends with the object.
  std::ostream& Stream();

  /// The threshold: lines of a level above it are not to be written. 0 switches all off. May change
  /// from one line to the next, and is called from any thread.
  static unsigned int GetMinLogLevel();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
