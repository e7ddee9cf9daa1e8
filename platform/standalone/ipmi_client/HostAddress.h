#pragma once

#include <string>

#include "platform/standalone/ipmi_client/Failure.h"

namespace Tavrin {
namespace Standalone {

/// Resolves `host` (an IPv4 or IPv6 address, or a host name) to the first numeric address that the
/// system names, as `numeric`. Returns a failure with result 0 when it did.
///
/// FreeIPMI could resolve names itself, but takes none over 64 characters and does not tell why one
/// does not resolve.
Failure ResolveHost(const std::string& host, std::string& numeric);

/// Address and port as FreeIPMI takes them.
std::string JoinHostAndPort(const std::string& numeric, int port);

}  // namespace Standalone
}  // namespace Tavrin
