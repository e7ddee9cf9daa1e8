#pragma once

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/FileDescriptor.h"

namespace Tavrin {

/// A UDP port on loopback that somebody holds and nobody answers on, unless told to.
class SilentPort {
 public:
  explicit SilentPort(const char* address = "127.0.0.1")
      : socket_(Bound(address)), number_(NumberOf(socket_)) {}

  std::uint16_t Number() const { return number_; }
  std::string Text() const { return std::to_string(number_); }

  /// From now on the system refuses what is sent here, as it does where nobody listens. The port
  /// stays held, so that no other process takes it meanwhile: its socket hears itself alone.
  void Refuse() {
    sockaddr_storage self = {};
    socklen_t size = sizeof self;
    if (::getsockname(socket_.Get(), AsAddress(self), &size) != 0 ||
        ::connect(socket_.Get(), AsAddress(self), size) != 0) {
      throw std::runtime_error("the port " + Text() + " cannot be made to refuse");
    }
  }

  /// Waits for a datagram and sends its sender another one.
  void SendBack(const std::vector<std::uint8_t>& datagram) {
    std::array<char, 65536> buffer{};
    sockaddr_storage from = {};
    socklen_t size = sizeof from;
    ::recvfrom(socket_.Get(), buffer.data(), buffer.size(), 0, AsAddress(from), &size);
    ::sendto(socket_.Get(), datagram.data(), datagram.size(), 0, AsAddress(from), size);
  }

 private:
  static sockaddr* AsAddress(sockaddr_storage& storage) {
    return reinterpret_cast<sockaddr*>(&storage);
  }

  static FileDescriptor Bound(const char* address) {
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address, "0", &hints, &found) != 0) {
      throw std::runtime_error(std::string(address) + " is no address");
    }
    FileDescriptor socket(::socket(found->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const bool bound = ::bind(socket.Get(), found->ai_addr, found->ai_addrlen) == 0;
    ::freeaddrinfo(found);
    if (!bound) {
      throw std::runtime_error(std::string(address) + " cannot be bound");
    }
    return socket;
  }

  static std::uint16_t NumberOf(const FileDescriptor& socket) {
    sockaddr_storage self = {};
    socklen_t size = sizeof self;
    ::getsockname(socket.Get(), AsAddress(self), &size);
    std::array<char, NI_MAXSERV> text{};
    ::getnameinfo(AsAddress(self), size, nullptr, 0, text.data(), text.size(), NI_NUMERICSERV);
    return static_cast<std::uint16_t>(std::stoi(text.data()));
  }

  FileDescriptor socket_;
  std::uint16_t number_;
};

}  // namespace Tavrin
