#pragma once

#include <cstdint>
#include <string>

#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin {
namespace Standalone {

/// Asks whether anybody is there, before a session is tried for: with an RMCP presence ping and Get
/// Channel Authentication Capabilities, both sent at once and again each second, to every address
/// that the name stands for, up to as many as the library connects to by default. Needs neither
/// user nor session, and leaves GetLastExchange() as it is.
///
/// Returns as soon as anything comes from there, since some controllers drop pings; what it is
/// worth, the session will show. The cause is None then. Otherwise it is, with its words:
/// - Silence, after 3 seconds;
/// - Unreachable, after a second, when the network says of every address, and once more to the
///   second try, that nobody is there or listens; at once where this machine knows no way there;
/// - TimeOver or Stopped, as of any exchange (ThreadDeadline.h, ConnectControl.h);
/// - HostName, NameServer, Forbidden, Memory or Other, as of IpmiClient::connect().
///
/// Host and port of what is returned are those given, and `result` is one of ConnectResult. A
/// failure is a line in the log, on the warning level.
LastExchange AskPresence(const std::string& host, std::uint16_t port);

}  // namespace Standalone
}  // namespace Tavrin
