#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/FileDescriptor.h"

namespace Tavrin {

/// A UDP port on loopback that somebody holds and nobody answers on, unless told to.
class SilentPort {
 public:
  SilentPort() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(socket_->Get(), reinterpret_cast<const sockaddr*>(&address), size);
    ::getsockname(socket_->Get(), reinterpret_cast<sockaddr*>(&address), &size);
    number_ = ntohs(address.sin_port);
  }

  void Close() { socket_.reset(); }

  int Number() const { return number_; }
  std::string Text() const { return std::to_string(number_); }

  /// Waits for a datagram and sends its sender another one.
  void SendBack(const std::vector<std::uint8_t>& datagram) {
    std::array<char, 65536> buffer{};
    sockaddr_in from{};
    socklen_t size = sizeof from;
    ::recvfrom(socket_->Get(), buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from),
               &size);
    ::sendto(socket_->Get(), datagram.data(), datagram.size(), 0,
             reinterpret_cast<const sockaddr*>(&from), size);
  }

 private:
  std::optional<Simulator::FileDescriptor> socket_;
  int number_;
};

}  // namespace Tavrin
