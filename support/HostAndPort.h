#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

/// Where a controller is said to be.
struct HostAndPort {
  std::string host;                   ///< Name or address; an IPv6 address without its brackets.
  std::optional<std::uint16_t> port;  ///< Empty when the text named none.
};

/// Reads `host`, `host:port`, `[v6]`, `[v6]:port` or a bare IPv6 address. Throws UsageError when
/// the text is none of these.
HostAndPort ParseHost(const std::string& text);

/// Reads a UDP port, 1 to 65535 in decimal. Throws UsageError for anything else.
std::uint16_t ParsePort(const std::string& text);

/// `host:port` as people write it: an IPv6 address gets brackets.
std::string AddressText(const std::string& host, std::uint16_t port);

}  // namespace Tavrin
