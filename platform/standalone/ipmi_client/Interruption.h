#pragma once

#include <chrono>

#include "platform/standalone/ipmi_client/Failure.h"
#include "platform/standalone/ipmi_client/UdpSocket.h"

namespace Tavrin {
namespace Standalone {

/// The longest that a wait goes on without a look at whether exchanges were stopped meanwhile.
constexpr std::chrono::milliseconds kLongestUnwatchedWait{50};

/// How long the answer to a question is waited for, once exchanges have ended, that leaves nothing
/// behind on the controller.
constexpr std::chrono::milliseconds kGraceToClose{300};

/// When the calling thread's exchanges end or have ended: at its deadline or when all were stopped,
/// whichever came first. Clock::time_point::max() as long as neither is known.
Clock::time_point EndOfExchanges();

/// Why an exchange fails whose end has come.
Failure InterruptionFailure();

/// Counts one session as open for as long as it lives.
class CountedSession {
 public:
  CountedSession();
  ~CountedSession();
  CountedSession(const CountedSession&) = delete;
  CountedSession& operator=(const CountedSession&) = delete;
};

}  // namespace Standalone
}  // namespace Tavrin
