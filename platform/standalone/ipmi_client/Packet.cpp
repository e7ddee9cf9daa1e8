#include "platform/standalone/ipmi_client/Packet.h"

#include <algorithm>
#include <array>

namespace Tavrin {
namespace Standalone {
namespace {

/// What a packet adds to its message at most: headers, initialization vector, pads, trailer.
constexpr int kMostAround = 128;

bool IsFilled(const Envelope& envelope, const Algorithms& algorithms, const PacketParts& parts) {
  const auto isAuthenticated = static_cast<std::uint8_t>(algorithms.integrity != 0);
  const auto isEncrypted = static_cast<std::uint8_t>(algorithms.confidentiality != 0);
  return fill_rmcp_hdr_ipmi(parts.rmcpHeader.Get()) == 0 &&
         fill_rmcpplus_session_hdr(envelope.payloadType, isAuthenticated, isEncrypted, 0, 0,
                                   envelope.sessionId, envelope.sequenceNumber,
                                   parts.sessionHeader.Get()) == 0 &&
         fill_lan_msg_hdr(IPMI_SLAVE_ADDRESS_BMC, envelope.networkFunction, IPMI_BMC_IPMB_LUN_BMC,
                          envelope.requesterSequenceNumber, parts.requestHeader.Get()) == 0 &&
         fill_rmcpplus_session_trlr(parts.sessionTrailer.Get()) == 0;
}

/// FreeIPMI leaves alone what a packet does not have. Both headers in front each packet has, and
/// the payload FreeIPMI empties itself.
void Empty(const PacketParts& parts) {
  for (const FiidObject* part :
       {&parts.answerHeader, &parts.messageTrailer, &parts.sessionTrailer}) {
    fiid_obj_clear(part->Get());
  }
}

}  // namespace

PacketParts& PacketParts::OfThisThread() {
  thread_local PacketParts parts;
  if (!parts.AreThere()) {
    parts = PacketParts();  // There may be memory again.
  }
  return parts;
}

bool PacketParts::AreThere() const {
  const std::array<const FiidObject*, 7> all = {&rmcpHeader,   &sessionHeader,  &requestHeader,
                                                &answerHeader, &messageTrailer, &sessionTrailer,
                                                &payload};
  return std::all_of(all.begin(), all.end(),
                     [](const FiidObject* part) { return part->Get() != nullptr; });
}

Datagram Pack(const Envelope& envelope, const Protection& protection, const FiidObject& message) {
  const PacketParts& parts = PacketParts::OfThisThread();
  if (!IsFilled(envelope, protection.algorithms, parts)) {
    return {};
  }
  // A message for which there was no memory has the length -1, and cannot be assembled below.
  Datagram datagram(static_cast<std::size_t>(fiid_obj_len_bytes(message.Get()) + kMostAround));
  const int length = assemble_ipmi_rmcpplus_pkt(
      protection.algorithms.authentication, protection.algorithms.integrity,
      protection.algorithms.confidentiality, protection.keys.Integrity().Data(),
      protection.keys.Integrity().length, protection.keys.Confidentiality().Data(),
      protection.keys.Confidentiality().length, protection.password, protection.passwordLength,
      parts.rmcpHeader.Get(), parts.sessionHeader.Get(), parts.requestHeader.Get(), message.Get(),
      parts.sessionTrailer.Get(), datagram.data(), static_cast<unsigned int>(datagram.size()),
      IPMI_INTERFACE_FLAGS_DEFAULT);
  datagram.resize(static_cast<std::size_t>(std::max(length, 0)));
  return datagram;
}

bool UnpackedPacket::Unpack(const Datagram& datagram, const Protection& protection) {
  Empty(parts_);
  const auto length = static_cast<unsigned int>(datagram.size());
  const SessionKeys::Key& integrity = protection.keys.Integrity();
  const SessionKeys::Key& confidentiality = protection.keys.Confidentiality();
  if (unassemble_ipmi_rmcpplus_pkt(
          protection.algorithms.authentication, protection.algorithms.integrity,
          protection.algorithms.confidentiality, integrity.Data(), integrity.length,
          confidentiality.Data(), confidentiality.length, datagram.data(), length,
          parts_.rmcpHeader.Get(), parts_.sessionHeader.Get(), parts_.payload.Get(),
          parts_.answerHeader.Get(), message.Get(), parts_.messageTrailer.Get(),
          parts_.sessionTrailer.Get(), IPMI_INTERFACE_FLAGS_DEFAULT) != 1) {
    return false;
  }
  return ipmi_rmcpplus_check_packet_session_authentication_code(
             protection.algorithms.integrity, datagram.data(), length, integrity.Data(),
             integrity.length, protection.password, protection.passwordLength,
             parts_.sessionTrailer.Get()) == 1;
}

bool UnpackedPacket::HasRightChecksums() const {
  return ipmi_lan_check_checksum(parts_.answerHeader.Get(), message.Get(),
                                 parts_.messageTrailer.Get()) == 1;
}

}  // namespace Standalone
}  // namespace Tavrin
