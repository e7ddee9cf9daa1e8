#pragma once

#include <functional>
#include <memory>

#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {
namespace Standalone {

/// Hands the lines that the calling thread writes to a handler of its own for as long as this
/// lives, and to nothing else, under a threshold of its own: lines of a library that knows nothing
/// of hosts are thereby told apart by thread. Handler and threshold of the process do not count for
/// that thread; they do for all others, those that it starts included. What is said once a process,
/// such as a malformed value in the environment, goes to the thread that met it first.
///
/// Handlers of different threads run at the same time, and fork() waits for none of them. A handler
/// must not log, and what it throws is dropped; an empty one drops every line. It gets texts as
/// they were written: see EscapeControlBytes().
///
/// May be nested; the innermost holds, and what held before holds again when it ends. Is destroyed
/// on the thread that made it, and several of them in the opposite order.
class ThreadLog {
 public:
  /// `threshold`: 0 or one of LogLevel; a larger value counts as Debug.
  ThreadLog(unsigned int threshold, std::function<void(const LogLine&)> handler);
  ~ThreadLog();
  ThreadLog(const ThreadLog&) = delete;
  ThreadLog& operator=(const ThreadLog&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Standalone
}  // namespace Tavrin
