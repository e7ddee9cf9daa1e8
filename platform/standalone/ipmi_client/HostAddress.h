#pragma once

#include <string>
#include <vector>

#include "platform/standalone/ipmi_client/Failure.h"

namespace Tavrin {
namespace Standalone {

/// Resolves `host` (an IPv4 or IPv6 address, or a host name) to its numeric addresses, of which
/// there is at least one then: those of IPv4 first, since controllers answer there most, and
/// otherwise in the order in which the system names them. Returns a failure with result 0 when it
/// did. How long a name server may take is the system's to say.
///
/// FreeIPMI could resolve names itself, but takes none over 64 characters, tries the first address
/// alone and does not tell why a name does not resolve.
Failure ResolveHost(const std::string& host, std::vector<std::string>& addresses);

/// Address and port as FreeIPMI takes them.
std::string JoinHostAndPort(const std::string& numeric, int port);

}  // namespace Standalone
}  // namespace Tavrin
