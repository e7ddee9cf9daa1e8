#pragma once

#include <chrono>

namespace Tavrin {
namespace Standalone {

/// Ends the exchanges of the thread that makes this at a moment, for as long as it lives: no answer
/// is waited for any longer, and connect() and send() fail at once with FailureCause::TimeOver,
/// which is not worth retrying. A session that is open then is closed, for which the controller is
/// given a third of a second.
///
/// The moment is one of a clock that nobody sets, and may be over already. Nothing else is cut
/// short: pauses that are not the client's, or a name server's silence, last as long as they do.
///
/// May be nested; the earliest moment holds. Is destroyed on the thread that made it, and several
/// of them in the opposite order. Other threads never see it.
class ThreadDeadline {
 public:
  explicit ThreadDeadline(std::chrono::steady_clock::time_point end);
  ~ThreadDeadline();
  ThreadDeadline(const ThreadDeadline&) = delete;
  ThreadDeadline& operator=(const ThreadDeadline&) = delete;

 private:
  const std::chrono::steady_clock::time_point before_;
};

}  // namespace Standalone
}  // namespace Tavrin
