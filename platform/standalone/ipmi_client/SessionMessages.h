#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/ipmi_client/Datagram.h"
#include "platform/standalone/ipmi_client/Packet.h"

namespace Tavrin {
namespace Standalone {

// The messages of an open session, protected as its cipher suite says.

/// The most data bytes of a request that one datagram holds with all that stands around them.
constexpr std::size_t kMostRequestBytes = 65000;

/// The request as a datagram; `envelope` says which session, which sequence number and which
/// requester sequence number. Empty when memory or file descriptors are short.
Datagram MakeRequest(const Envelope& envelope, const Protection& protection,
                     const IPMICOMMAND& request);

/// What an answer has to fit.
struct ExpectedAnswer {
  std::uint32_t remoteConsoleSessionId{};
  std::uint8_t requesterSequenceNumber{};  ///< Of the request.
  std::uint8_t networkFunction{};
  std::uint8_t command{};
  /// Session sequence number of the last answer that was taken.
  std::optional<std::uint32_t> lastSequenceNumber;
  bool checksChecksums{};
};

struct SessionAnswer {
  std::uint32_t sequenceNumber{};
  std::uint8_t completionCode{};
  std::vector<std::uint8_t> data;
};

/// Fills `answer` only when the datagram is the one that is expected.
Verdict ReadAnswer(const Datagram& datagram, const Protection& protection,
                   const ExpectedAnswer& expected, SessionAnswer& answer);

}  // namespace Standalone
}  // namespace Tavrin
