#include "tests/support/Ipv6Test.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Tavrin {

std::string Ipv6LoopbackObstacle() {
  sockaddr_in6 address = {};
  address.sin6_family = AF_INET6;
  address.sin6_addr = in6addr_loopback;
  const int trial = socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const bool bound =
      trial >= 0 && bind(trial, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  const int cause = errno;
  if (trial >= 0) {
    close(trial);
  }
  return bound ? "" : "::1 cannot be bound: " + std::generic_category().message(cause);
}

}  // namespace Tavrin
