#pragma once

#include <string>
#include <vector>

namespace Tavrin {

/// What something took, start and end of the process included where it is one.
struct Cost {
  double wallSeconds = 0;
  double processorSeconds = 0;
};

Cost operator+(const Cost& left, const Cost& right);

/// What this process took from construction on, its threads included.
class Meter {
 public:
  Meter();
  Cost Read() const;

 private:
  Cost start_;
};

/// The memory that this process has resident now.
long ResidentKib();

/// Runs a program, found along PATH, to its end; its output is dropped. Throws std::runtime_error
/// unless it ends with exit code 0.
Cost RunToEnd(const std::vector<std::string>& arguments);

/// A line that a program printed, without its end.
struct PrintedLine {
  double atSeconds = 0;  ///< When it had come whole, from the program's start.
  std::string text;
};

/// What a program took, how it ended, and what it printed on standard output.
struct Listened {
  Cost cost;
  int exitCode = -1;
  std::vector<PrintedLine> lines;
};

/// Runs a program, found along PATH, to its end; what it prints on standard error is dropped. Takes
/// its output in large pieces, so that listening takes no processor time worth mentioning.
Listened Listen(const std::vector<std::string>& arguments);

}  // namespace Tavrin
