#include "platform/standalone/ipmi_client/HostAddress.h"

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <memory>

#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin {
namespace Standalone {
namespace {

Failure BadHost(const std::string& reason) {
  return {ConnectResult::BadHostName,
          "the host name does not resolve (" + reason + "); check it, or give the address"};
}

}  // namespace

Failure ResolveHost(const std::string& host, std::string& numeric) {
  if (host.empty() || host.find('\0') != std::string::npos) {
    return BadHost(host.empty() ? "it is empty" : "it holds a zero byte");
  }
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_DGRAM;
  hints.ai_flags = AI_ADDRCONFIG;
  addrinfo* found = nullptr;
  if (const int error = getaddrinfo(host.c_str(), nullptr, &hints, &found); error != 0) {
    return BadHost(gai_strerror(error));
  }
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found, freeaddrinfo);
  std::array<char, NI_MAXHOST> text{};
  if (const int error = getnameinfo(found->ai_addr, found->ai_addrlen, text.data(), text.size(),
                                    nullptr, 0, NI_NUMERICHOST);
      error != 0) {
    return BadHost(gai_strerror(error));
  }
  numeric = text.data();
  return {};
}

std::string JoinHostAndPort(const std::string& numeric, int port) {
  // FreeIPMI takes brackets around a plain IPv6 address only, not around one with a zone.
  const bool inBrackets =
      numeric.find(':') != std::string::npos && numeric.find('%') == std::string::npos;
  const std::string host = inBrackets ? "[" + numeric + "]" : numeric;
  return host + ":" + std::to_string(port);
}

}  // namespace Standalone
}  // namespace Tavrin
