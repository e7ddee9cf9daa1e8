#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

/// Where a controller is said to be.
struct HostAndPort {
  /// A name of at most 253 bytes or an address; an IPv6 address without its brackets, and with its
  /// zone where it has one. Always printable ASCII.
  std::string host;

  /// 1 to 65535. Empty when the text named none: which one that means is the caller's to say.
  std::optional<std::uint16_t> port;
};

/// Reads `host`, `host:port`, `[v6]`, `[v6]:port` or a bare IPv6 address, and asks no name server.
/// Throws UsageError, which names the text, when it is none of these: also for an IPv4 address with
/// numbers missing, which resolvers would take for another machine's.
HostAndPort ParseHost(const std::string& text);

/// Reads a UDP port, 1 to 65535 in decimal. Throws UsageError for anything else.
std::uint16_t ParsePort(const std::string& text);

/// `host:port` as people write it: an IPv6 address gets brackets. ParseHost() reads it.
std::string AddressText(const std::string& host, std::uint16_t port);

}  // namespace Tavrin
