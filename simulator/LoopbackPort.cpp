#include "simulator/LoopbackPort.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <poll.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace Tavrin::Simulator {
namespace {

constexpr std::uint32_t kLoopbackNet = 127;
constexpr unsigned int kNetShift = 24;

FileDescriptor OpenSocket(int family) {
  FileDescriptor descriptor(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (descriptor.Get() < 0) {
    throw std::system_error(errno, std::generic_category(), "no socket");
  }
  return descriptor;
}

std::uint16_t BoundPort(int descriptor) {
  LoopbackEndpoint bound;
  bound.length = sizeof bound.storage;
  if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&bound.storage), &bound.length) != 0) {
    throw std::system_error(errno, std::generic_category(), "no port of the socket");
  }
  sockaddr_in6 address = {};
  // The port stands at the same place in IPv4 and IPv6 addresses.
  static_assert(offsetof(sockaddr_in6, sin6_port) == offsetof(sockaddr_in, sin_port));
  std::memcpy(&address, &bound.storage, sizeof address);
  return ntohs(address.sin6_port);
}

/// Takes a name that only one process of the machine can have; the kernel gives it back when the
/// process ends, however it ends.
bool TakeName(int descriptor, const std::string& endpoint) {
  const std::string name = "poveixme-smm-simulator " + endpoint;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  // A leading 0x00 byte makes the name one without a file.
  std::memcpy(&address.sun_path[1], name.data(), name.size());
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), length) == 0;
}

}  // namespace

const sockaddr* LoopbackEndpoint::Address() const {
  return reinterpret_cast<const sockaddr*>(&storage);
}

bool IsLoopbackAddress(const std::string& text) {
  in_addr four = {};
  if (inet_pton(AF_INET, text.c_str(), &four) == 1) {
    return ntohl(four.s_addr) >> kNetShift == kLoopbackNet;
  }
  in6_addr six = {};
  return inet_pton(AF_INET6, text.c_str(), &six) == 1 &&
         std::memcmp(&six, &in6addr_loopback, sizeof six) == 0;
}

LoopbackEndpoint MakeEndpoint(const std::string& address, std::uint16_t port) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_DGRAM;
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    throw std::invalid_argument("no address in numbers: " + address);
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
  LoopbackEndpoint endpoint;
  endpoint.length = found->ai_addrlen;
  std::memcpy(&endpoint.storage, found->ai_addr, found->ai_addrlen);
  return endpoint;
}

std::string EndpointText(const std::string& address, std::uint16_t port) {
  const bool six = address.find(':') != std::string::npos;
  return (six ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

PortReservation::PortReservation(FileDescriptor lock, std::uint16_t port)
    : lock_(std::move(lock)), port_(port) {}

std::optional<PortReservation> PortReservation::Take(const std::string& address,
                                                     std::uint16_t port) {
  const LoopbackEndpoint endpoint = MakeEndpoint(address, port);
  // Only a trial: the port is free again for ipmi_sim when this socket closes.
  const FileDescriptor trial = OpenSocket(endpoint.storage.ss_family);
  if (bind(trial.Get(), endpoint.Address(), endpoint.length) != 0) {
    return std::nullopt;
  }
  const std::uint16_t bound = BoundPort(trial.Get());
  FileDescriptor lock = OpenSocket(AF_UNIX);
  if (!TakeName(lock.Get(), EndpointText(address, bound))) {
    return std::nullopt;
  }
  return PortReservation(std::move(lock), bound);
}

bool AnswersPing(const LoopbackEndpoint& endpoint, int timeoutMilliseconds) {
  // RMCP header of class ASF, then ASF's own number, message type, tag and length.
  static constexpr std::array<unsigned char, 12> kPing = {0x06, 0x00, 0xFF, 0x06, 0x00, 0x00,
                                                          0x11, 0xBE, 0x80, 0x00, 0x00, 0x00};
  static constexpr std::size_t kTypePosition = 8;
  static constexpr unsigned char kPong = 0x40;
  const FileDescriptor client = OpenSocket(endpoint.storage.ss_family);
  if (connect(client.Get(), endpoint.Address(), endpoint.length) != 0 ||
      send(client.Get(), kPing.data(), kPing.size(), 0) < 0) {
    return false;
  }
  std::array<pollfd, 1> waiting = {{{client.Get(), POLLIN, 0}}};
  if (poll(waiting.data(), waiting.size(), timeoutMilliseconds) <= 0) {
    return false;
  }
  std::array<unsigned char, 64> answer{};
  const ssize_t received = recv(client.Get(), answer.data(), answer.size(), 0);
  return received > static_cast<ssize_t>(kTypePosition) && answer[kTypePosition] == kPong;
}

}  // namespace Tavrin::Simulator
