#include "platform/standalone/ipmi_client/HostAddress.h"

#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <memory>

#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin {
namespace Standalone {
namespace {

using AddressList = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

Failure BadHost(const std::string& reason) {
  return {ConnectResult::BadHostName, FailureCause::HostName,
          "the host name does not resolve (" + reason + ")", "check it, or give the address"};
}

Failure ResolverFailure(int error) {
  const std::string reason = gai_strerror(error);
  switch (error) {
    case EAI_AGAIN:
      return {ConnectResult::WorthRetrying, FailureCause::NameServer,
              "no name server could resolve the host name (" + reason + ")",
              "try again later, or give the address"};
    case EAI_MEMORY:
    case EAI_SYSTEM:
      return {ConnectResult::Failed, FailureCause::Other,
              "this machine cannot resolve host names (" + reason + ")", ""};
    default:
      return BadHost(reason);
  }
}

int Find(const std::string& host, int flags, AddressList& found) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_DGRAM;
  hints.ai_flags = flags;
  addrinfo* list = nullptr;
  const int error = getaddrinfo(host.c_str(), nullptr, &hints, &list);
  if (error == 0) {
    found.reset(list);
  }
  return error;
}

std::string Numeric(const addrinfo& entry) {
  std::array<char, NI_MAXHOST> text{};
  const int error = getnameinfo(entry.ai_addr, entry.ai_addrlen, text.data(), text.size(), nullptr,
                                0, NI_NUMERICHOST);
  return error == 0 ? text.data() : std::string();
}

bool IsIpv4(const std::string& numeric) { return numeric.find(':') == std::string::npos; }

}  // namespace

Failure ResolveHost(const std::string& host, std::vector<std::string>& addresses) {
  if (host.empty() || host.find('\0') != std::string::npos) {
    return BadHost(host.empty() ? "it is empty" : "it holds a zero byte");
  }
  AddressList found(nullptr, freeaddrinfo);
  // An address is taken as it stands; a name leads to addresses that this machine has a use for.
  int error = Find(host, AI_NUMERICHOST, found);
  if (error == EAI_NONAME) {
    error = Find(host, AI_ADDRCONFIG, found);
  }
  if (error != 0) {
    return ResolverFailure(error);
  }
  addresses.clear();
  for (const addrinfo* entry = found.get(); entry != nullptr; entry = entry->ai_next) {
    addresses.push_back(Numeric(*entry));
  }
  std::stable_partition(addresses.begin(), addresses.end(), IsIpv4);
  return {};
}

}  // namespace Standalone
}  // namespace Tavrin
