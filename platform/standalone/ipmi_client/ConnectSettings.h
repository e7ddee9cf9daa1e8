#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/standalone/ipmi_client/Failure.h"

namespace Tavrin {
namespace Standalone {

/// The numbers of one connection, each within its range.
struct ConnectSettings {
  int port{};
  std::uint8_t cipherSuite{};
  std::uint8_t privilegeLevel{};
  /// How long one step of a conversation may go without a usable answer. Opening has five steps, a
  /// request is one, and so is closing.
  unsigned int sessionTimeoutMs{};
  /// After how long a question is asked again; 0 when each attempt has its own interval.
  unsigned int retransmissionTimeoutMs{};
  unsigned int workaroundFlags{};
};

/// Reads `settings` from the port text, the cipher suite given in code, and the configuration.
/// Fails unless every one is in range.
Failure ReadConnectSettings(const std::string& port, unsigned long cipherSuite,
                            ConnectSettings& settings);

/// After how long a question is asked again, once `failedAttempts` to connect have failed: a
/// controller that was asked too often for its pace is given more time in the next.
std::chrono::milliseconds RepetitionInterval(const ConnectSettings& settings,
                                             std::size_t failedAttempts);

}  // namespace Standalone
}  // namespace Tavrin
