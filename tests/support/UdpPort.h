#pragma once

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

#include "support/FileDescriptor.h"

namespace Tavrin {

/// A UDP port on loopback that is held while this lives; nobody answers on it unless told to.
class UdpPort {
 public:
  /// A free one of the address. Throws std::system_error when there is none.
  explicit UdpPort(const char* address = "127.0.0.1") : socket_(Bound(address)) {
    Require(::getsockname(socket_.Get(), Self(), &size_) == 0, "no port of the socket");
  }

  std::uint16_t Number() const { return ntohs(self_.sin6_port); }
  std::string Text() const { return std::to_string(Number()); }
  int Descriptor() const { return socket_.Get(); }

  /// From now on the system refuses what is sent here, as it does where nobody listens. The port
  /// stays held, so that no other process takes it meanwhile: its socket hears itself alone.
  void Refuse() { Require(::connect(Descriptor(), Self(), size_) == 0, "no refusing"); }

 private:
  static void Require(bool holds, const std::string& otherwise) {
    if (!holds) {
      throw std::system_error(errno, std::generic_category(), otherwise);
    }
  }

  static FileDescriptor Bound(const char* address) {
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    ::getaddrinfo(address, "0", &hints, &found);
    FileDescriptor socket(::socket(found->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const bool isBound = ::bind(socket.Get(), found->ai_addr, found->ai_addrlen) == 0;
    ::freeaddrinfo(found);
    Require(isBound, std::string(address) + " cannot be bound");
    return socket;
  }

  sockaddr* Self() { return reinterpret_cast<sockaddr*>(&self_); }

  FileDescriptor socket_;
  sockaddr_in6 self_ = {};  // An IPv4 address has its port at the same place.
  socklen_t size_ = sizeof self_;
};

}  // namespace Tavrin
