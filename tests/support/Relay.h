#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "support/FileDescriptor.h"

namespace Tavrin {

enum class Direction { ToController, ToClient };

struct Datagram {
  Direction direction = Direction::ToController;
  std::vector<std::uint8_t> bytes;
};

/// A datagram on its way, which leaves the relay so much later.
struct Departure {
  Datagram datagram;
  std::chrono::milliseconds delay{0};
};

/// What leaves the relay in the place of a datagram that came: nothing, the same, or anything else
/// in either direction. Called on the relay's thread, one datagram at a time.
using Fault = std::function<std::vector<Departure>(const Datagram&)>;

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
  std::uint16_t Port() const { return port_; }

  /// Holds from the next datagram on, until Heal() or another fault. What was on its way is lost.
  void Break(Fault fault);
  void Heal() { Break(nullptr); }

  /// The controller is at that port from now on, as one that was restarted: its old port may have
  /// gone to somebody else meanwhile.
  void Lead(std::uint16_t controllerPort) { controllerPort_ = controllerPort; }

  /// How many RMCP+ sessions clients asked for since the relay began, repetitions not counted.
  std::size_t SessionsAskedFor() const;

  /// How many file descriptors the relay has open now.
  std::size_t Descriptors() const { return 1 + clientCount_; }

 private:
  struct Client;
  struct Queued;

  void Run();
  void TakeFrom(int descriptor, const std::shared_ptr<Client>& client);
  std::shared_ptr<Client> ClientAt(std::uint16_t port);
  void Pass(const std::shared_ptr<Client>& client, const Datagram& datagram);
  void CountSession(const Datagram& datagram);
  void RememberSession(std::uint32_t number);
  void SendDue();
  int MillisecondsToNext() const;
  void Send(const Client& client, const Datagram& datagram) const;

  std::atomic<std::uint16_t> controllerPort_;
  FileDescriptor front_;
  std::uint16_t port_;
  mutable std::mutex mutex_;
  Fault fault_;  // Guarded by mutex_, as are the three below.
  std::vector<Queued> queue_;
  std::deque<std::uint32_t> latestSessions_;
  std::size_t sessionCount_ = 0;
  std::deque<std::shared_ptr<Client>> clients_;  // The relay's thread's own.
  std::atomic<std::size_t> clientCount_{0};
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace Tavrin
