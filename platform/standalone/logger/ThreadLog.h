#pragma once

#include <functional>

#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {
namespace Standalone {

/// Hands the lines that the calling thread writes to a handler of its own for as long as this
/// lives, in place of the process's handler and threshold: a library that knows nothing of hosts is
/// thereby told apart by thread. The handler must not log, and what it throws is dropped. May be
/// nested on one thread; the innermost holds. Is destroyed on the thread that made it, in the
/// opposite order.
class ThreadLog {
 public:
  /// `threshold`: 0 off, 1 error, 2 warning, 3 info, 4 debug; a larger value counts as 4.
  ThreadLog(unsigned int threshold, std::function<void(const LogLine&)> handler);
  ~ThreadLog();
  ThreadLog(const ThreadLog&) = delete;
  ThreadLog& operator=(const ThreadLog&) = delete;

  /// The innermost on the calling thread; nullptr when there is none.
  static const ThreadLog* Innermost();

  unsigned int Threshold() const { return threshold_; }
  void Take(const LogLine& line) const;

 private:
  unsigned int threshold_;
  std::function<void(const LogLine&)> handler_;
  const ThreadLog* outer_;
};

}  // namespace Standalone
}  // namespace Tavrin
