#include "platform/standalone/ipmi_client/Packet.h"

namespace Tavrin {
namespace Standalone {
namespace {

/// What a packet adds to its message at most: headers, initialization vector, pads, trailer.
constexpr std::size_t kMostAround = 128;

bool IsFilled(const Envelope& envelope, const Algorithms& algorithms, const FiidObject& rmcpHeader,
              const FiidObject& sessionHeader, const FiidObject& messageHeader,
              const FiidObject& sessionTrailer) {
  const bool isOfSession = envelope.sessionId != 0;
  const auto isAuthenticated = static_cast<std::uint8_t>(isOfSession && algorithms.integrity != 0);
  const auto isEncrypted =
      static_cast<std::uint8_t>(isOfSession && algorithms.confidentiality != 0);
  return fill_rmcp_hdr_ipmi(rmcpHeader.Get()) == 0 &&
         fill_rmcpplus_session_hdr(envelope.payloadType, isAuthenticated, isEncrypted, 0, 0,
                                   envelope.sessionId, envelope.sequenceNumber,
                                   sessionHeader.Get()) == 0 &&
         fill_lan_msg_hdr(IPMI_SLAVE_ADDRESS_BMC, envelope.networkFunction, IPMI_BMC_IPMB_LUN_BMC,
                          envelope.number, messageHeader.Get()) == 0 &&
         fill_rmcpplus_session_trlr(sessionTrailer.Get()) == 0;
}

/// FreeIPMI clears it before it takes a packet apart. Making one anew each time would cost more
/// than all the rest of the packet, since it has room for the longest payload.
const FiidObject& ThisThreadsPayload() {
  thread_local FiidObject payload(tmpl_rmcpplus_payload);
  if (payload.Get() == nullptr) {
    payload = FiidObject(tmpl_rmcpplus_payload);  // There may be memory again.
  }
  return payload;
}

}  // namespace

Datagram Pack(const Envelope& envelope, const Protection& protection, const FiidObject& message) {
  const FiidObject rmcpHeader(tmpl_rmcp_hdr);
  const FiidObject sessionHeader(tmpl_rmcpplus_session_hdr);
  const FiidObject messageHeader(tmpl_lan_msg_hdr_rq);
  const FiidObject sessionTrailer(tmpl_rmcpplus_session_trlr);
  const int messageLength = fiid_obj_len_bytes(message.Get());
  if (messageLength < 0 || !IsFilled(envelope, protection.algorithms, rmcpHeader, sessionHeader,
                                     messageHeader, sessionTrailer)) {
    return {};
  }
  Datagram datagram(static_cast<std::size_t>(messageLength) + kMostAround);
  const int length = assemble_ipmi_rmcpplus_pkt(
      protection.algorithms.authentication, protection.algorithms.integrity,
      protection.algorithms.confidentiality, protection.keys.Integrity().Data(),
      protection.keys.Integrity().length, protection.keys.Confidentiality().Data(),
      protection.keys.Confidentiality().length, protection.password, protection.passwordLength,
      rmcpHeader.Get(), sessionHeader.Get(), messageHeader.Get(), message.Get(),
      sessionTrailer.Get(), datagram.data(), static_cast<unsigned int>(datagram.size()),
      IPMI_INTERFACE_FLAGS_DEFAULT);
  datagram.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return datagram;
}

UnpackedPacket::UnpackedPacket(const fiid_field_t* fieldsOfMessage)
    : sessionHeader(tmpl_rmcpplus_session_hdr),
      messageHeader(tmpl_lan_msg_hdr_rs),
      message(fieldsOfMessage),
      rmcpHeader_(tmpl_rmcp_hdr),
      messageTrailer_(tmpl_lan_msg_trlr),
      sessionTrailer_(tmpl_rmcpplus_session_trlr) {}

bool UnpackedPacket::Unpack(const Datagram& datagram, const Protection& protection) {
  const auto length = static_cast<unsigned int>(datagram.size());
  const SessionKeys::Key& integrity = protection.keys.Integrity();
  const SessionKeys::Key& confidentiality = protection.keys.Confidentiality();
  if (unassemble_ipmi_rmcpplus_pkt(
          protection.algorithms.authentication, protection.algorithms.integrity,
          protection.algorithms.confidentiality, integrity.Data(), integrity.length,
          confidentiality.Data(), confidentiality.length, datagram.data(), length,
          rmcpHeader_.Get(), sessionHeader.Get(), ThisThreadsPayload().Get(), messageHeader.Get(),
          message.Get(), messageTrailer_.Get(), sessionTrailer_.Get(),
          IPMI_INTERFACE_FLAGS_DEFAULT) != 1) {
    return false;
  }
  return protection.algorithms.integrity == IPMI_INTEGRITY_ALGORITHM_NONE ||
         ipmi_rmcpplus_check_packet_session_authentication_code(
             protection.algorithms.integrity, datagram.data(), length, integrity.Data(),
             integrity.length, protection.password, protection.passwordLength,
             sessionTrailer_.Get()) == 1;
}

bool UnpackedPacket::HasRightChecksums() const {
  return ipmi_lan_check_checksum(messageHeader.Get(), message.Get(), messageTrailer_.Get()) == 1;
}

}  // namespace Standalone
}  // namespace Tavrin
