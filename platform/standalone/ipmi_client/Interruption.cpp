#include "platform/standalone/ipmi_client/Interruption.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "platform/standalone/ipmi_client/ThreadDeadline.h"

namespace Tavrin {
namespace Standalone {
namespace {

constexpr Clock::rep kNotStopped = 0;

/// By the clock of every wait, so that a handler of a signal stores one number and nothing more.
std::atomic<Clock::rep> stoppedAt{kNotStopped};
static_assert(std::atomic<Clock::rep>::is_always_lock_free);

std::atomic<int> openSessions{0};

thread_local Clock::time_point deadlineOfThread = Clock::time_point::max();

}  // namespace

void StopExchanges() noexcept {
  Clock::rep expected = kNotStopped;
  stoppedAt.compare_exchange_strong(expected, Clock::now().time_since_epoch().count());
}

void AllowExchanges() noexcept { stoppedAt = kNotStopped; }

bool AreExchangesStopped() noexcept { return stoppedAt != kNotStopped; }

int CountOpenSessions() noexcept { return openSessions; }

ThreadDeadline::ThreadDeadline(Clock::time_point end) : before_(deadlineOfThread) {
  deadlineOfThread = std::min(end, before_);
}

ThreadDeadline::~ThreadDeadline() { deadlineOfThread = before_; }

CountedSession::CountedSession() { ++openSessions; }

CountedSession::~CountedSession() { --openSessions; }

Clock::time_point EndOfExchanges() {
  const Clock::rep stop = stoppedAt;
  return stop == kNotStopped ? deadlineOfThread
                             : std::min(deadlineOfThread, Clock::time_point(Clock::duration(stop)));
}

/// Exchanges may have been allowed again meanwhile, which does not revive the one that failed.
Failure InterruptionFailure() {
  const bool isDeadline =
      deadlineOfThread != Clock::time_point::max() && EndOfExchanges() == deadlineOfThread;
  return FailureOf(isDeadline ? Trouble::TimeOver : Trouble::Stopped);
}

}  // namespace Standalone
}  // namespace Tavrin
