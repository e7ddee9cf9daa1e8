#include "support/HostAndPort.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "support/Digits.h"
#include "support/EscapeControlBytes.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

constexpr std::size_t kMaxHostNameLength = 253;

bool IsHostNameCharacter(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '.' ||
         c == '_';
}

bool IsIpv4Address(const std::string& text) {
  in_addr address{};
  return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

bool IsZone(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsHostNameCharacter);
}

/// The address may carry a zone, as link-local ones do: fe80::1%eth0.
bool IsIpv6Address(const std::string& text) {
  const std::size_t percent = text.find('%');
  if (percent != std::string::npos && !IsZone(text.substr(percent + 1))) {
    return false;
  }
  in6_addr address{};
  return inet_pton(AF_INET6, text.substr(0, percent).c_str(), &address) == 1;
}

bool IsNameOrIpv4Address(const std::string& text) {
  if (text.empty() || text.size() > kMaxHostNameLength || text.front() == '-') {
    return false;
  }
  // Resolvers read "10.1" as 10.0.0.1: a mistyped address must not reach another machine.
  if (std::all_of(text.begin(), text.end(), [](char c) { return IsDigit(c) || c == '.'; })) {
    return IsIpv4Address(text);
  }
  return std::all_of(text.begin(), text.end(), IsHostNameCharacter);
}

[[noreturn]] void RefuseHost(const std::string& text) {
  throw UsageError("host is \"" + EscapeControlBytes(text) +
                   "\"; expected a host name, an IPv4 address, either with :port, [IPv6 "
                   "address]:port or an IPv6 address");
}

HostAndPort ParseBracketed(const std::string& text) {
  const std::size_t end = text.find(']');
  if (end == std::string::npos || !IsIpv6Address(text.substr(1, end - 1))) {
    RefuseHost(text);
  }
  HostAndPort result{text.substr(1, end - 1), std::nullopt};
  if (end + 1 == text.size()) {
    return result;
  }
  if (text[end + 1] != ':') {
    RefuseHost(text);
  }
  result.port = ParsePort(text.substr(end + 2));
  return result;
}

}  // namespace

HostAndPort ParseHost(const std::string& text) {
  // A NUL byte would hide what follows it from the functions of the C library below.
  if (text.find('\0') != std::string::npos) {
    RefuseHost(text);
  }
  if (!text.empty() && text.front() == '[') {
    return ParseBracketed(text);
  }
  if (IsIpv6Address(text)) {
    return {text, std::nullopt};
  }
  const std::size_t colon = text.find(':');
  if (!IsNameOrIpv4Address(text.substr(0, colon)) || colon != text.rfind(':')) {
    RefuseHost(text);
  }
  HostAndPort result{text.substr(0, colon), std::nullopt};
  if (colon != std::string::npos) {
    result.port = ParsePort(text.substr(colon + 1));
  }
  return result;
}

std::uint16_t ParsePort(const std::string& text) {
  std::uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end || port == 0) {
    throw UsageError("port is \"" + EscapeControlBytes(text) +
                     "\"; expected a number from 1 to 65535");
  }
  return port;
}

std::string AddressText(const std::string& host, std::uint16_t port) {
  const bool needsBrackets = host.find(':') != std::string::npos;
  return (needsBrackets ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

}  // namespace Tavrin
