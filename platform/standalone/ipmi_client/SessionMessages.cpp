#include "platform/standalone/ipmi_client/SessionMessages.h"

#include <algorithm>
#include <array>

namespace Tavrin {
namespace Standalone {
namespace {

constexpr unsigned int kRequired = FIID_FIELD_REQUIRED | FIID_FIELD_LENGTH_FIXED;
constexpr unsigned int kOptional = FIID_FIELD_OPTIONAL | FIID_FIELD_LENGTH_VARIABLE;

// Any request and any answer with at most so many data bytes. FreeIPMI makes room for all of them
// in each message, and takes a field without room for the end of its list.

unsigned int BitsOf(std::size_t dataBytes) {
  return static_cast<unsigned int>(8 * std::max<std::size_t>(dataBytes, 1));
}

std::array<fiid_field_t, 3> RequestFields(std::size_t dataBytes) {
  return {{{8, "cmd", kRequired}, {BitsOf(dataBytes), "data", kOptional}, {0, "", 0}}};
}

std::array<fiid_field_t, 4> AnswerFields(std::size_t dataBytes) {
  return {{{8, "cmd", kRequired},
           {8, "comp_code", kRequired},
           {BitsOf(dataBytes), "data", kOptional},
           {0, "", 0}}};
}

bool IsFilled(const IPMICOMMAND& request, const FiidObject& message) {
  const auto length = static_cast<unsigned int>(request.data.size());
  return fiid_obj_set(message.Get(), "cmd", request.cmd) == 0 &&
         (request.data.empty() || fiid_obj_set_data(message.Get(), "data", request.data.data(),
                                                    length) == static_cast<int>(length));
}

/// Whether one sequence number comes after another, also where they begin anew.
bool IsLater(std::uint32_t number, std::uint32_t last) {
  return static_cast<std::int32_t>(number - last) > 0;
}

/// Only where answers are authenticated; controllers that need not count do not always.
bool IsSecondCopy(const UnpackedPacket& packet, const Protection& protection,
                  const ExpectedAnswer& expected) {
  const auto number = packet.SessionHeader().NumberAs<std::uint32_t>("session_sequence_number");
  return protection.algorithms.integrity != IPMI_INTEGRITY_ALGORITHM_NONE &&
         expected.lastSequenceNumber && !IsLater(number, *expected.lastSequenceNumber);
}

bool AnswersRequest(const UnpackedPacket& packet, const ExpectedAnswer& expected) {
  return packet.MessageHeader().Number("rq_seq") == expected.requesterSequenceNumber &&
         packet.MessageHeader().Number("net_fn") == expected.networkFunction + 1U &&
         packet.message.Number("cmd") == expected.command;
}

bool IsOfSession(const DatagramHeader& header, const ExpectedAnswer& expected) {
  return header.isRmcpPlus && header.payloadType == IPMI_PAYLOAD_TYPE_IPMI &&
         header.sessionId == expected.remoteConsoleSessionId;
}

bool IsProtectedAsAgreed(const DatagramHeader& header, const Algorithms& algorithms) {
  return header.isAuthenticated == (algorithms.integrity != IPMI_INTEGRITY_ALGORITHM_NONE) &&
         header.isEncrypted == (algorithms.confidentiality != IPMI_CONFIDENTIALITY_ALGORITHM_NONE);
}

}  // namespace

Datagram MakeRequest(const Envelope& envelope, const Protection& protection,
                     const IPMICOMMAND& request) {
  const FiidObject message(RequestFields(request.data.size()).data());
  return IsFilled(request, message) ? Pack(envelope, protection, message) : Datagram();
}

Verdict ReadAnswer(const Datagram& datagram, const Protection& protection,
                   const ExpectedAnswer& expected, SessionAnswer& answer) {
  const std::optional<DatagramHeader> header = ReadHeader(datagram);
  if (!header) {
    return Verdict::Damaged;
  }
  if (!IsOfSession(*header, expected)) {
    return Verdict::Foreign;
  }
  UnpackedPacket packet(AnswerFields(datagram.size()).data());
  if (!IsProtectedAsAgreed(*header, protection.algorithms) ||
      !packet.Unpack(datagram, protection) ||
      (expected.checksChecksums && !packet.HasRightChecksums()) ||
      fiid_obj_packet_valid(packet.message.Get()) != 1) {
    return Verdict::Damaged;
  }
  if (IsSecondCopy(packet, protection, expected) || !AnswersRequest(packet, expected)) {
    return Verdict::Foreign;
  }
  answer = {packet.SessionHeader().NumberAs<std::uint32_t>("session_sequence_number"),
            packet.message.NumberAs<std::uint8_t>("comp_code"), packet.message.Bytes("data")};
  return Verdict::Answer;
}

}  // namespace Standalone
}  // namespace Tavrin
