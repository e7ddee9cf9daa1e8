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

}  // namespace Tavrin
