#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <vector>

#include "platform/standalone/ipmi_client/Datagram.h"

namespace Tavrin {

/// The network of the whole program that links it, on a clock that goes on only while somebody
/// waits: every time is exact, and no test takes any.
struct ScriptedNetwork {
  using Time = std::chrono::milliseconds;

  /// Empty again, at time 0.
  static void Reset();

  /// The datagram reaches the client so long from now, or an error of errno in its place.
  void Deliver(Time delay, Standalone::Datagram datagram, int error = 0);

  struct Sent {
    Time at;
    Standalone::Datagram datagram;
  };

  Time now{0};
  Time perLook{0};       ///< So much goes by whenever somebody looks at the clock.
  int connectError = 0;  ///< Those of errno; 0 is none.
  int sendError = 0;
  int sockets = 0;         ///< So many were made.
  std::vector<Sent> sent;  ///< What the client sent.
  /// What happens when the client sends.
  std::function<void(const Standalone::Datagram&)> onSent;

  /// What happens beside it while the client waits until then for something to come.
  std::function<void(Time until)> whileWaiting;

  struct Arrival {
    Standalone::Datagram datagram;
    int error;
  };
  std::multimap<Time, Arrival> arrivals;
};

extern ScriptedNetwork network;

}  // namespace Tavrin
