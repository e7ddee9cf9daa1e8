#include "benchmarks/wire/OverheardConversation.h"

#include <optional>

#include "platform/standalone/HexByte.h"

namespace Tavrin {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kApplication = 0x06;
constexpr std::uint8_t kGetChannelAuthenticationCapabilities = 0x38;
constexpr std::uint8_t kSetSessionPrivilegeLevel = 0x3B;
constexpr std::uint8_t kCloseSession = 0x3C;

// Payload types.
constexpr std::uint8_t kOpenSessionRequest = 0x10;
constexpr std::uint8_t kRakpMessage1 = 0x12;
constexpr std::uint8_t kRakpMessage3 = 0x14;
constexpr std::uint8_t kAuthenticatedIpmiMessage = 0x40;

bool IsRmcpPlus(const Bytes& datagram) {
  constexpr std::size_t kAuthenticationTypeAt = 4;
  constexpr std::uint8_t kRmcpPlus = 0x06;
  return datagram.at(kAuthenticationTypeAt) == kRmcpPlus;
}

/// The payload type; its two highest bits say whether the payload is encrypted and authenticated.
std::uint8_t PayloadType(const Bytes& datagram) {
  constexpr std::size_t kPayloadTypeAt = 5;
  return datagram.at(kPayloadTypeAt);
}

/// The IPMI request in a datagram, unless it carries none or is encrypted.
std::optional<IPMICOMMAND> RequestIn(const Bytes& datagram) {
  constexpr std::size_t kLengthAt = 14;
  constexpr std::size_t kMessageAt = 16;
  constexpr std::size_t kLengthAtIpmi15 = 13;
  constexpr std::size_t kMessageAtIpmi15 = 14;
  const bool isRmcpPlus = IsRmcpPlus(datagram);
  if (isRmcpPlus && PayloadType(datagram) != kAuthenticatedIpmiMessage) {
    return std::nullopt;
  }
  // In a message, byte 1 is the network function and LUN, byte 5 the command; data follow, then a
  // checksum.
  const std::size_t message = isRmcpPlus ? kMessageAt : kMessageAtIpmi15;
  const std::size_t length = datagram.at(isRmcpPlus ? kLengthAt : kLengthAtIpmi15);
  IPMICOMMAND request;
  request.netFn = static_cast<std::uint8_t>(datagram.at(message + 1) >> 2U);
  request.cmd = datagram.at(message + 5);
  for (std::size_t at = message + 6; at < message + length - 1; ++at) {
    request.data.push_back(datagram.at(at));
  }
  return request;
}

bool IsOfSession(const IPMICOMMAND& request) {
  return request.netFn == kApplication &&
         (request.cmd == kGetChannelAuthenticationCapabilities ||
          request.cmd == kSetSessionPrivilegeLevel || request.cmd == kCloseSession);
}

std::string NameOf(const IPMICOMMAND& request) {
  if (!IsOfSession(request)) {
    std::string name = "the command " + Standalone::HexByte(request.netFn) + "/" +
                       Standalone::HexByte(request.cmd);
    for (const std::uint8_t byte : request.data) {
      name += " " + Standalone::HexByte(byte);
    }
    return name;
  }
  switch (request.cmd) {
    case kGetChannelAuthenticationCapabilities:
      return "Get Channel Authentication Capabilities";
    case kSetSessionPrivilegeLevel:
      return "Set Session Privilege Level";
    default:
      return "Close Session";
  }
}

std::string PurposeOf(const Bytes& datagram) {
  if (const std::optional<IPMICOMMAND> request = RequestIn(datagram)) {
    return NameOf(*request);
  }
  switch (PayloadType(datagram)) {
    case kOpenSessionRequest:
      return "RMCP+ Open Session";
    case kRakpMessage1:
      return "RAKP messages 1 and 2";
    case kRakpMessage3:
      return "RAKP messages 3 and 4";
    default:
      return "encrypted";
  }
}

}  // namespace

OverheardConversation::OverheardConversation(Relay& relay) : relay_(relay) {
  // A fault that passes everything on: the relay shows it each datagram.
  relay_.Break([this](const Datagram& datagram) {
    const std::lock_guard<std::mutex> lock(mutex_);
    datagrams_.push_back(datagram);
    return std::vector<Departure>{{datagram}};
  });
}

OverheardConversation::~OverheardConversation() { relay_.Heal(); }

std::size_t OverheardConversation::Datagrams() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return datagrams_.size();
}

std::vector<RoundTrip> OverheardConversation::RoundTrips() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<RoundTrip> trips;
  for (const Datagram& datagram : datagrams_) {
    if (datagram.direction == Direction::ToController) {
      trips.push_back({PurposeOf(datagram.bytes), datagram.bytes.size(), 0});
    } else if (!trips.empty()) {
      trips.back().answerBytes = datagram.bytes.size();
    }
  }
  return trips;
}

std::vector<IPMICOMMAND> OverheardConversation::Commands() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<IPMICOMMAND> commands;
  for (const Datagram& datagram : datagrams_) {
    if (datagram.direction == Direction::ToController) {
      const std::optional<IPMICOMMAND> request = RequestIn(datagram.bytes);
      if (request && !IsOfSession(*request)) {
        commands.push_back(*request);
      }
    }
  }
  return commands;
}

}  // namespace Tavrin
