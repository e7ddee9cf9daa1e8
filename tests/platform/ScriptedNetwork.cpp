#include "tests/platform/ScriptedNetwork.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <utility>

namespace Tavrin {
namespace {

/// The system's clock begins later than 0, too.
constexpr std::chrono::seconds kStart{1000};
/// Who asks more often without ever waiting does so for ever.
constexpr int kMostLooks = 100000;
int looksSinceTimeWentOn = 0;
/// Whatever was a socket once.
std::set<int> descriptors;

void GoOn(ScriptedNetwork::Time time) {
  looksSinceTimeWentOn = time > network.now ? 0 : looksSinceTimeWentOn;
  network.now = std::max(network.now, time);
}

/// What the network has said of an earlier datagram, which comes in the place of the next.
int TakeRefusal() {
  const auto next = network.arrivals.begin();
  const bool isThere = next != network.arrivals.end() && next->first <= network.now;
  const int error = isThere ? next->second.error : 0;
  if (error != 0) {
    network.arrivals.erase(next);
  }
  return error;
}

int Fail(int error) {
  errno = error;
  return -1;
}

}  // namespace

ScriptedNetwork network;

void ScriptedNetwork::Reset() {
  network = {};
  looksSinceTimeWentOn = 0;
}

void ScriptedNetwork::Deliver(Time delay, Standalone::Datagram datagram, int error) {
  arrivals.insert({now + delay, {std::move(datagram), error}});
}

}  // namespace Tavrin

using Tavrin::Fail;
using Tavrin::network;

// In the place of the system's.

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (clock != CLOCK_MONOTONIC) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  if (++Tavrin::looksSinceTimeWentOn > Tavrin::kMostLooks) {
    std::abort();
  }
  network.now += network.perLook;
  const std::chrono::nanoseconds now = Tavrin::kStart + network.now;
  *time = {now.count() / 1000000000, now.count() % 1000000000};
  return 0;
}

extern "C" int socket(int /*domain*/, int /*type*/, int /*protocol*/) noexcept {
  ++network.sockets;
  const int descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
  Tavrin::descriptors.insert(descriptor);
  return descriptor;
}

extern "C" int connect(int /*descriptor*/, const sockaddr* /*address*/, socklen_t /*length*/) {
  return network.connectError == 0 ? 0 : Fail(network.connectError);
}

extern "C" ssize_t send(int /*descriptor*/, const void* data, std::size_t length, int /*flags*/) {
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  const int refusal = Tavrin::TakeRefusal();
  if (refusal != 0) {
    return Fail(refusal);
  }
  network.sent.push_back({network.now, {bytes, bytes + length}});
  if (network.sendError != 0) {
    return Fail(network.sendError);
  }
  if (network.onSent) {
    network.onSent(network.sent.back().datagram);
  }
  return static_cast<ssize_t>(length);
}

extern "C" int poll(pollfd* sources, nfds_t count, int timeout) {
  const bool isAsExpected = std::all_of(sources, sources + count, [](const pollfd& source) {
    return Tavrin::descriptors.count(source.fd) == 1 && source.events == POLLIN &&
           source.revents == 0;
  });
  if (count == 0 || !isAsExpected || timeout < 0) {
    std::abort();
  }
  const auto end = network.now + std::chrono::milliseconds(timeout);
  if (network.whileWaiting) {
    network.whileWaiting(end);
  }
  const auto next = network.arrivals.begin();
  const bool comes = next != network.arrivals.end() && next->first <= end;
  Tavrin::GoOn(comes ? next->first : end);
  return comes ? 1 : 0;
}

extern "C" ssize_t recv(int /*descriptor*/, void* target, std::size_t length, int flags) {
  if (flags != 0 && flags != (MSG_PEEK | MSG_TRUNC)) {
    std::abort();
  }
  const auto next = network.arrivals.begin();
  if (next == network.arrivals.end() || next->first > network.now) {
    return Fail(EAGAIN);
  }
  const auto [datagram, error] = next->second;
  if ((flags & MSG_PEEK) == 0 || error != 0) {
    network.arrivals.erase(next);
  }
  if (error != 0) {
    return Fail(error);
  }
  std::copy_n(datagram.begin(), std::min(length, datagram.size()),
              static_cast<std::uint8_t*>(target));
  return static_cast<ssize_t>(datagram.size());
}
