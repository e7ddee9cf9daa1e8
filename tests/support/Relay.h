#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/support/UdpPort.h"

namespace Tavrin {

enum class Direction { ToController, ToClient };

struct Datagram {
  Direction direction = Direction::ToController;
  std::vector<std::uint8_t> bytes;
};

/// The payload type of RMCP+, with the bits that tell how the payload is protected; 0xFF in a
/// packet of IPMI 1.5, and in what is none.
std::uint8_t PayloadType(const Datagram& datagram);

/// A datagram on its way, which leaves the relay so much later.
struct Departure {
  Datagram datagram;
  std::chrono::milliseconds delay{0};
};
using Departures = std::vector<Departure>;

/// What leaves the relay in the place of a datagram that came: nothing, the same, or anything else
/// in either direction. Called on the relay's thread, one datagram at a time.
using Fault = std::function<Departures(const Datagram&)>;

/// Carries datagrams between clients and a controller, both on 127.0.0.1, and breaks the wire on
/// request. Each client has a port of its own towards the controller, as it would have without the
/// relay.
class Relay {
 public:
  explicit Relay(std::uint16_t controllerPort);
  ~Relay();
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  /// Where clients find the controller.
  std::uint16_t Port() const { return front_.Number(); }

  /// Holds from the next datagram on, until Heal() or another fault. What was on its way is lost.
  void Break(Fault fault);
  void Heal() { Break(nullptr); }

  /// The controller is at that port from now on, as one that was restarted: its old port may have
  /// gone to somebody else meanwhile.
  void Lead(std::uint16_t controllerPort) { controllerPort_ = controllerPort; }

  /// How many RMCP+ sessions clients asked for since the relay began, repetitions not counted.
  std::size_t SessionsAskedFor() const { return sessionCount_; }

 private:
  /// The place of a client, which goes to another when all are taken.
  struct Client {
    UdpPort towardsController;
    std::uint16_t port = 0;
    std::vector<std::uint8_t> session;  ///< The number of the one that it asked for last.
  };
  struct Queued {
    const UdpPort* from;
    std::uint16_t to;  ///< 0 for the controller's port.
    std::vector<std::uint8_t> bytes;
  };

  void Run();
  void Take(const UdpPort& source, Client* client);
  Client& ClientAt(std::uint16_t port);
  void Pass(const Datagram& datagram, Client& client);
  int SendDue();

  std::atomic<std::uint16_t> controllerPort_;
  UdpPort front_;
  // A conversation has a place of its own, and the older ones can go. All are there from the
  // beginning, so that no descriptor is opened meanwhile.
  std::array<Client, 32> clients_;
  std::size_t clientCount_ = 0;
  std::atomic<std::size_t> sessionCount_{0};
  std::mutex mutex_;
  Fault fault_;  // Guarded by mutex_, as is what follows, in the order in which it is due.
  std::multimap<std::chrono::steady_clock::time_point, Queued> queue_;
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace Tavrin
