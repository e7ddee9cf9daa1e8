#include "platform/standalone/ipmi_client/Datagram.h"

#include <freeipmi/freeipmi.h>

namespace Tavrin {
namespace Standalone {
namespace {

constexpr std::size_t kMessageClassAt = 3;
constexpr std::size_t kAuthenticationTypeAt = 4;

std::uint32_t LittleEndian(const Datagram& datagram, std::size_t at, std::size_t count) {
  std::uint32_t value = 0;
  for (std::size_t i = count; i > 0; --i) {
    value = value << 8U | datagram.at(at + i - 1);
  }
  return value;
}

std::optional<DatagramHeader> ReadRmcpPlusHeader(const Datagram& datagram) {
  constexpr std::size_t kPayloadTypeAt = 5;
  constexpr std::uint8_t kEncrypted = 0x80;
  constexpr std::uint8_t kAuthenticated = 0x40;
  constexpr std::size_t kSessionIdAt = 6;
  constexpr std::size_t kLengthAt = 14;
  constexpr std::size_t kPayloadAt = 16;  // Its first byte is the tag, outside of a session.
  if (datagram.size() <= kPayloadAt ||
      datagram.size() - kPayloadAt < LittleEndian(datagram, kLengthAt, 2)) {
    return std::nullopt;
  }
  DatagramHeader header;
  header.isRmcpPlus = true;
  const std::uint8_t type = datagram[kPayloadTypeAt];
  header.payloadType = static_cast<std::uint8_t>(type & ~(kEncrypted | kAuthenticated));
  header.isEncrypted = (type & kEncrypted) != 0;
  header.isAuthenticated = (type & kAuthenticated) != 0;
  header.sessionId = LittleEndian(datagram, kSessionIdAt, 4);
  header.number = datagram[kPayloadAt];
  return header;
}

std::optional<DatagramHeader> ReadIpmi15Header(const Datagram& datagram) {
  constexpr std::size_t kSessionIdAt = 9;
  constexpr std::size_t kLengthAt = 13;
  constexpr std::size_t kMessageAt = 14;
  constexpr std::size_t kNumberAt = 18;
  if (datagram.size() <= kNumberAt || datagram.size() - kMessageAt < datagram[kLengthAt]) {
    return std::nullopt;
  }
  DatagramHeader header;
  header.sessionId = LittleEndian(datagram, kSessionIdAt, 4);
  header.number = static_cast<std::uint8_t>(datagram[kNumberAt] >> 2U);  // Below it is the LUN.
  return header;
}

}  // namespace

std::optional<DatagramHeader> ReadHeader(const Datagram& datagram) {
  if (datagram.size() <= kAuthenticationTypeAt || datagram[0] != RMCP_VERSION_1_0 ||
      datagram[kMessageClassAt] != RMCP_HDR_MESSAGE_CLASS_IPMI) {
    return std::nullopt;
  }
  switch (datagram[kAuthenticationTypeAt]) {
    case IPMI_AUTHENTICATION_TYPE_RMCPPLUS:
      return ReadRmcpPlusHeader(datagram);
    case IPMI_AUTHENTICATION_TYPE_NONE:
      return ReadIpmi15Header(datagram);
    default:
      return std::nullopt;
  }
}

}  // namespace Standalone
}  // namespace Tavrin
