#pragma once

#include <chrono>
#include <string>

#include "platform/standalone/ipmi_client/Datagram.h"
#include "support/FileDescriptor.h"

namespace Tavrin {
namespace Standalone {

/// The clock of every wait: it goes on evenly, whatever happens to the time of day.
using Clock = std::chrono::steady_clock;

/// A UDP socket that exchanges datagrams with one address. Errors are those of errno, 0 when there
/// is none.
class UdpSocket {
 public:
  /// `numericAddress` is an IPv4 or IPv6 address.
  UdpSocket(const std::string& numericAddress, int port);

  /// What keeps the socket from being used at all.
  [[nodiscard]] int OpenError() const { return openError_; }

  /// Returns at once.
  int Send(const Datagram& datagram);

  /// What Receive() came back with: a datagram, an error, or neither at its deadline.
  struct Received {
    const Datagram* datagram = nullptr;  ///< Holds until the next call.
    int error = 0;
  };

  /// Waits for a datagram until `deadline`; a caught signal changes nothing about that. What the
  /// network says of the other end is kept for PeerError() and does not end the waiting either,
  /// since a controller that starts again comes back. Allocates nothing for a datagram of usual
  /// length: without memory the number of a session that the controller has just begun would be
  /// lost, and nobody could end it.
  Received Receive(Clock::time_point deadline);

  /// Takes a datagram that is there, or an error; neither when nothing has come.
  Received Take();

  /// To wait at for several sockets at once; it stays this one's.
  [[nodiscard]] int Descriptor() const { return descriptor_.Get(); }

  /// What the network said last of the other end, such as ECONNREFUSED.
  [[nodiscard]] int PeerError() const { return peerError_; }
  void ForgetPeerError() { peerError_ = 0; }

 private:
  void Wait(Clock::time_point deadline) const;
  int TakePeerError(int error);

  int openError_{};
  FileDescriptor descriptor_;
  int peerError_ = 0;
  Datagram buffer_;
};

}  // namespace Standalone
}  // namespace Tavrin
