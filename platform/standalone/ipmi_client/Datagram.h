#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace Tavrin {
namespace Standalone {

using Datagram = std::vector<std::uint8_t>;

/// What a datagram is to somebody who waits for one certain answer.
enum class Verdict {
  Answer,   ///< It is the one.
  Damaged,  ///< It cannot be read, or is not protected as agreed.
  Foreign,  ///< It is another message: of another step, request or session, or a second copy.
};

/// What a datagram says of itself without any key.
struct DatagramHeader {
  /// Whether it belongs to IPMI 2.0; otherwise to IPMI 1.5, which only asks what a controller can
  /// do.
  bool isRmcpPlus = false;
  std::uint8_t payloadType = 0;  ///< Of IPMI 2.0; 0 is an IPMI message.
  bool isEncrypted = false;
  bool isAuthenticated = false;
  std::uint32_t sessionId{};  ///< 0 outside of a session.
  /// Of a message outside of a session what ties it to its request: message tag or requester
  /// sequence number.
  std::uint8_t number{};
};

/// Nothing when the datagram is no IPMI message or ends before its message does.
std::optional<DatagramHeader> ReadHeader(const Datagram& datagram);

}  // namespace Standalone
}  // namespace Tavrin
