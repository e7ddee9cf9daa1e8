#include "platform/standalone/ipmi_client/UdpSocket.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace Tavrin {
namespace Standalone {
namespace {

/// What the messages of a session fit in; longer ones take more room when they come.
constexpr std::size_t kUsualCapacity = 1024;

using AddressList = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

AddressList FindAddress(const std::string& numericAddress, int port) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  const int error =
      getaddrinfo(numericAddress.c_str(), std::to_string(port).c_str(), &hints, &list);
  return {error == 0 ? list : nullptr, freeaddrinfo};
}

/// A connected socket takes datagrams from its other end only, and hears what the network says of
/// it.
FileDescriptor OpenConnected(const std::string& numericAddress, int port, int& error) {
  const AddressList address = FindAddress(numericAddress, port);
  if (!address) {
    error = EADDRNOTAVAIL;
    return FileDescriptor(-1);
  }
  FileDescriptor descriptor(
      socket(address->ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const bool isConnected = descriptor.Get() >= 0 &&
                           connect(descriptor.Get(), address->ai_addr, address->ai_addrlen) == 0;
  error = isConnected ? 0 : errno;
  return descriptor;
}

}  // namespace

UdpSocket::UdpSocket(const std::string& numericAddress, int port)
    : descriptor_(OpenConnected(numericAddress, port, openError_)) {
  buffer_.reserve(kUsualCapacity);
}

int UdpSocket::Send(const Datagram& datagram) {
  // What the network said of an earlier datagram comes first, in the place of this one.
  for (int attempt = 0; attempt < 2; ++attempt) {
    // Without room to send in it is as good as lost on the way, and repeated like that.
    if (send(descriptor_.Get(), datagram.data(), datagram.size(), MSG_NOSIGNAL) >= 0 ||
        errno == EAGAIN) {
      return 0;
    }
    if (TakePeerError(errno) != 0) {
      return errno;
    }
  }
  return peerError_;
}

/// Returns 0 when the error tells of the other end, else the error.
int UdpSocket::TakePeerError(int error) {
  switch (error) {
    case ECONNREFUSED:
    case EHOSTUNREACH:
    case EHOSTDOWN:
    case ENETUNREACH:
      peerError_ = error;
      return 0;
    default:
      return error;
  }
}

/// Returns when something came, or for another reason: that shows when it is taken.
void UdpSocket::Wait(Clock::time_point deadline) const {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  pollfd source{descriptor_.Get(), POLLIN, 0};
  poll(&source, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
}

UdpSocket::Received UdpSocket::Take() {
  // How long it is comes first, so that a datagram of any length is taken whole.
  ssize_t length = recv(descriptor_.Get(), nullptr, 0, MSG_PEEK | MSG_TRUNC);
  buffer_.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  length = length < 0 ? length : recv(descriptor_.Get(), buffer_.data(), buffer_.size(), 0);
  if (length >= 0) {
    buffer_.resize(static_cast<std::size_t>(length));
    return {&buffer_, 0};
  }
  const bool isNothing = errno == EAGAIN || errno == EINTR;
  return {nullptr, isNothing ? 0 : TakePeerError(errno)};
}

UdpSocket::Received UdpSocket::Receive(Clock::time_point deadline) {
  Received received;
  while (received.datagram == nullptr && received.error == 0 && Clock::now() < deadline) {
    Wait(deadline);
    received = Take();
  }
  return received;
}

}  // namespace Standalone
}  // namespace Tavrin
