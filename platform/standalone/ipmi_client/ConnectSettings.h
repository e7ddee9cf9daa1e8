#pragma once

#include <cstdint>
#include <string>

#include "platform/standalone/ipmi_client/Failure.h"

namespace Tavrin {
namespace Standalone {

/// The numbers of one connection, each within the range that FreeIPMI takes.
struct ConnectSettings {
  int port = 0;
  std::uint8_t cipherSuite = 0;
  std::uint8_t privilegeLevel = 0;
  unsigned int sessionTimeoutMs = 0;
  unsigned int retransmissionTimeoutMs = 0;
  unsigned int workaroundFlags = 0;
};

/// Reads `settings` from the port text, the cipher suite given in code, and the configuration.
/// Returns a failure with result 0 when every one is in range.
Failure ReadConnectSettings(const std::string& port, unsigned long cipherSuite,
                            ConnectSettings& settings);

}  // namespace Standalone
}  // namespace Tavrin
