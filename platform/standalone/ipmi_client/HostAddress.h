#pragma once

#include <string>
#include <vector>

#include "platform/standalone/ipmi_client/Failure.h"

namespace Tavrin {
namespace Standalone {

/// Resolves `host` (an IPv4 or IPv6 address, or a host name) to its numeric addresses, of which
/// there is at least one unless it fails: those of IPv4 first, since controllers answer there most,
/// and otherwise in the order in which the system names them. How long a name server may take is
/// the system's to say.
Failure ResolveHost(const std::string& host, std::vector<std::string>& addresses);

}  // namespace Standalone
}  // namespace Tavrin
