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
  /// How long one step of a conversation may go without a usable answer. Opening has five steps, a
  /// request is one; closing waits for one retransmission interval at most.
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
