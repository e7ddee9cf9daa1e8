#pragma once

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/UdpPort.h"

namespace Tavrin {

/// Somebody at a port of loopback who answers each datagram as told, on a thread of its own: with
/// what the function gives, or not at all when that is empty. Keeps what came, and when.
class UdpResponder {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using Answer = std::function<Bytes(const Bytes&)>;
  struct Arrival {
    std::chrono::steady_clock::time_point at;
    Bytes datagram;
  };

  explicit UdpResponder(Answer answer) : answer_(std::move(answer)), thread_([this] { Run(); }) {}
  ~UdpResponder() {
    ends_ = true;
    thread_.join();
  }
  UdpResponder(const UdpResponder&) = delete;
  UdpResponder& operator=(const UdpResponder&) = delete;

  std::uint16_t Port() const { return port_.Number(); }

  std::vector<Arrival> Arrivals() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return arrivals_;
  }

 private:
  void Run() {
    while (!ends_) {
      pollfd source{port_.Descriptor(), POLLIN, 0};
      if (poll(&source, 1, 20) == 1) {
        AnswerNext();
      }
    }
  }

  void AnswerNext() {
    Bytes datagram(2048);
    sockaddr_in from{};
    socklen_t size = sizeof from;
    auto* const sender = reinterpret_cast<sockaddr*>(&from);
    const ssize_t length =
        recvfrom(port_.Descriptor(), datagram.data(), datagram.size(), MSG_DONTWAIT, sender, &size);
    if (length < 0) {
      return;
    }
    datagram.resize(static_cast<std::size_t>(length));
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      arrivals_.push_back({std::chrono::steady_clock::now(), datagram});
    }
    const Bytes answer = answer_(datagram);
    if (!answer.empty()) {
      sendto(port_.Descriptor(), answer.data(), answer.size(), 0, sender, size);
    }
  }

  UdpPort port_;
  Answer answer_;
  mutable std::mutex mutex_;
  std::vector<Arrival> arrivals_;  ///< Guarded by the mutex.
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

/// What an RMCP presence ping is answered with; nothing to any other datagram.
inline UdpResponder::Bytes AnswerPing(const UdpResponder::Bytes& datagram) {
  constexpr std::uint8_t kAsf = 0x06;
  const bool isPing = datagram.size() == 12 && datagram[3] == kAsf && datagram[8] == 0x80;
  return isPing ? UdpResponder::Bytes{6,  0, 0xFF, kAsf, 0,    0, 0x11, 0xBE, 0x40, datagram[9], 0,
                                      16, 0, 0,    0x11, 0xBE, 0, 0,    0,    0,    0x81,        0,
                                      0,  0, 0,    0,    0,    0}
                : UdpResponder::Bytes();
}

/// What Get Channel Authentication Capabilities is answered with, by a controller that refuses it
/// with completion code 0xC1; nothing to any other datagram.
inline UdpResponder::Bytes RefuseCapabilities(const UdpResponder::Bytes& datagram) {
  if (datagram.size() != 23 || datagram[3] != 0x07) {
    return {};
  }
  const std::uint8_t number = datagram[18];
  const auto sum = static_cast<std::uint8_t>(-(0x20 + number + 0x38 + 0xC1));
  return {6, 0, 0xFF, 7,    0,    0,    0,    0,      0,    0,    0,
          0, 0, 8,    0x81, 0x1C, 0x63, 0x20, number, 0x38, 0xC1, sum};
}

}  // namespace Tavrin
