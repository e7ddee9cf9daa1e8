#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <optional>
#include <string>

#include "support/FileDescriptor.h"

namespace Tavrin::Simulator {

/// A loopback address with its port, as the socket calls take it.
struct LoopbackEndpoint {
  sockaddr_storage storage = {};
  socklen_t length = 0;

  [[nodiscard]] const sockaddr* Address() const;
};

/// Whether the text is a loopback address in numbers, IPv4 or IPv6.
bool IsLoopbackAddress(const std::string& text);

LoopbackEndpoint MakeEndpoint(const std::string& address, std::uint16_t port);

/// The endpoint as a user writes it: 127.0.0.1:623 or [::1]:623.
std::string EndpointText(const std::string& address, std::uint16_t port);

/// A UDP port kept from other simulators for as long as the object lives. ipmi_sim opens its port
/// such that a second ipmi_sim can open the same one without an error and take half of the traffic;
/// the reservation is what excludes that.
class PortReservation {
 public:
  /// Reserves the port, or any free one when it is 0. Nothing when it is taken.
  static std::optional<PortReservation> Take(const std::string& address, std::uint16_t port);

  [[nodiscard]] std::uint16_t Port() const { return port_; }

 private:
  PortReservation(FileDescriptor lock, std::uint16_t port);

  FileDescriptor lock_;
  std::uint16_t port_;
};

/// Whether a controller answers an RMCP presence ping at the endpoint within the time.
bool AnswersPing(const LoopbackEndpoint& endpoint, int timeoutMilliseconds);

}  // namespace Tavrin::Simulator
