#include "platform/standalone/ipmi_client/OpeningMessages.h"

#include <freeipmi/freeipmi.h>

#include <algorithm>

#include "platform/standalone/ipmi_client/Packet.h"

namespace Tavrin {
namespace Standalone {
namespace {

/// More than any proof of a password takes.
constexpr std::size_t kProofCapacity = 64;
/// More than the one packet of IPMI 1.5 takes.
constexpr std::size_t kIpmi15Capacity = 64;

const SessionKeys& NoKeys() {
  static const SessionKeys keys;
  return keys;
}

Protection Unprotected() { return {{}, NoKeys()}; }

Datagram PackOpening(std::uint8_t payloadType, const FiidObject& message) {
  return Pack({payloadType}, Unprotected(), message);
}

/// Takes a message apart that has come in the place of an answer of that type and tag. A refusal
/// holds nothing for certain but its status.
Verdict UnpackOpening(const Datagram& datagram, std::uint8_t payloadType, std::uint8_t tag,
                      UnpackedPacket& packet, std::uint8_t& status) {
  const std::optional<DatagramHeader> header = ReadHeader(datagram);
  if (!header) {
    return Verdict::Damaged;
  }
  if (header->payloadType != payloadType || header->number != tag) {
    return Verdict::Foreign;
  }
  const auto code = packet.Unpack(datagram, Unprotected())
                        ? packet.message.Number("rmcpplus_status_code")
                        : std::nullopt;
  if (!code) {
    return Verdict::Damaged;
  }
  status = static_cast<std::uint8_t>(*code);
  const bool isRefusal = status != RMCPPLUS_STATUS_NO_ERRORS;
  const bool isComplete = fiid_obj_packet_valid(packet.message.Get()) == 1;
  return isRefusal || isComplete ? Verdict::Answer : Verdict::Damaged;
}

bool IsForUs(const FiidObject& message, const Handshake& handshake) {
  return message.Number("remote_console_session_id") == handshake.remoteConsoleSessionId;
}

void Copy(const FiidObject& message, const char* field, std::array<std::uint8_t, 16>& target) {
  const std::vector<std::uint8_t> bytes = message.Bytes(field);
  std::copy_n(bytes.begin(), std::min(bytes.size(), target.size()), target.begin());
}

/// How many bytes prove the password in RAKP message 2.
std::size_t ProofLength(std::uint8_t authenticationAlgorithm) {
  switch (authenticationAlgorithm) {
    case IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA1:
      return IPMI_HMAC_SHA1_DIGEST_LENGTH;
    case IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_MD5:
      return IPMI_HMAC_MD5_DIGEST_LENGTH;
    case IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA256:
      return IPMI_HMAC_SHA256_DIGEST_LENGTH;
    default:
      return 0;
  }
}

bool ProvesPassword(const FiidObject& message, const Login& login, const Handshake& handshake,
                    const Rakp2& rakp2) {
  return ipmi_rmcpplus_check_rakp_2_key_exchange_authentication_code(
             login.algorithms.authentication, login.password, login.passwordLength,
             handshake.remoteConsoleSessionId, handshake.managedSystemSessionId,
             handshake.remoteConsoleRandomNumber.data(),
             static_cast<unsigned int>(handshake.remoteConsoleRandomNumber.size()),
             rakp2.managedSystemRandomNumber.data(),
             static_cast<unsigned int>(rakp2.managedSystemRandomNumber.size()),
             rakp2.managedSystemGuid.data(),
             static_cast<unsigned int>(rakp2.managedSystemGuid.size()), IPMI_NAME_ONLY_LOOKUP,
             login.privilegeLevel, login.userName, login.userNameLength, message.Get()) == 1;
}

bool HasRightIntegrityCheckValue(const FiidObject& message, const Login& login,
                                 const Handshake& handshake, const SessionKeys& keys) {
  return ipmi_rmcpplus_check_rakp_4_integrity_check_value(
             login.algorithms.authentication, keys.SessionIntegrity().Data(),
             keys.SessionIntegrity().length, handshake.remoteConsoleRandomNumber.data(),
             static_cast<unsigned int>(handshake.remoteConsoleRandomNumber.size()),
             handshake.managedSystemSessionId, handshake.managedSystemGuid.data(),
             static_cast<unsigned int>(handshake.managedSystemGuid.size()), message.Get()) == 1;
}

Datagram PackRakp3(std::uint8_t tag, std::uint8_t status, const Handshake& handshake,
                   const std::uint8_t* proof, unsigned int length) {
  const FiidObject message(tmpl_rmcpplus_rakp_message_3);
  const bool isFilled = fill_rmcpplus_rakp_message_3(tag, status, handshake.managedSystemSessionId,
                                                     proof, length, message.Get()) == 0;
  return isFilled ? PackOpening(IPMI_PAYLOAD_TYPE_RAKP_MESSAGE_3, message) : Datagram();
}

/// A packet of IPMI 1.5 outside of a session, taken apart.
struct UnpackedIpmi15 {
  FiidObject rmcpHeader{tmpl_rmcp_hdr};
  FiidObject sessionHeader{tmpl_lan_session_hdr};
  FiidObject messageHeader{tmpl_lan_msg_hdr_rs};
  FiidObject message{tmpl_cmd_get_channel_authentication_capabilities_rs};
  FiidObject messageTrailer{tmpl_lan_msg_trlr};

  [[nodiscard]] bool Unpack(const Datagram& datagram) const {
    return unassemble_ipmi_lan_pkt(datagram.data(), static_cast<unsigned int>(datagram.size()),
                                   rmcpHeader.Get(), sessionHeader.Get(), messageHeader.Get(),
                                   message.Get(), messageTrailer.Get(),
                                   IPMI_INTERFACE_FLAGS_DEFAULT) == 1;
  }

  [[nodiscard]] bool HasRightChecksums() const {
    return ipmi_lan_check_checksum(messageHeader.Get(), message.Get(), messageTrailer.Get()) == 1;
  }

  [[nodiscard]] bool IsCapabilities() const {
    return messageHeader.Number("net_fn") == IPMI_NET_FN_APP_RS &&
           message.Number("cmd") == IPMI_CMD_GET_CHANNEL_AUTHENTICATION_CAPABILITIES;
  }
};

void FillCapabilities(const FiidObject& message, const Login& login, Capabilities& capabilities) {
  capabilities.hasIpmi20 = ipmi_check_authentication_capabilities_ipmi_2_0(message.Get()) == 1;
  capabilities.isUserAllowed = ipmi_check_authentication_capabilities_username(
                                   login.userName, login.password, message.Get()) == 1;
  capabilities.needsKg = ipmi_check_authentication_capabilities_k_g(nullptr, message.Get()) != 1;
}

}  // namespace

Datagram MakeCapabilitiesRequest(std::uint8_t tag, std::uint8_t privilegeLevel) {
  const FiidObject rmcpHeader(tmpl_rmcp_hdr);
  const FiidObject sessionHeader(tmpl_lan_session_hdr);
  const FiidObject messageHeader(tmpl_lan_msg_hdr_rq);
  const FiidObject message(tmpl_cmd_get_channel_authentication_capabilities_rq);
  if (fill_rmcp_hdr_ipmi(rmcpHeader.Get()) != 0 ||
      fill_lan_session_hdr(IPMI_AUTHENTICATION_TYPE_NONE, 0, 0, sessionHeader.Get()) != 0 ||
      fill_lan_msg_hdr(IPMI_SLAVE_ADDRESS_BMC, IPMI_NET_FN_APP_RQ, IPMI_BMC_IPMB_LUN_BMC, tag,
                       messageHeader.Get()) != 0 ||
      fill_cmd_get_channel_authentication_capabilities(
          IPMI_CHANNEL_NUMBER_CURRENT_CHANNEL, privilegeLevel, IPMI_GET_IPMI_V20_EXTENDED_DATA,
          message.Get()) != 0) {
    return {};
  }
  Datagram datagram(kIpmi15Capacity);
  const int length = assemble_ipmi_lan_pkt(
      rmcpHeader.Get(), sessionHeader.Get(), messageHeader.Get(), message.Get(), nullptr, 0,
      datagram.data(), static_cast<unsigned int>(datagram.size()), IPMI_INTERFACE_FLAGS_DEFAULT);
  datagram.resize(static_cast<std::size_t>(std::max(length, 0)));
  return datagram;
}

Verdict ReadCapabilities(const Datagram& datagram, std::uint8_t tag, const Login& login,
                         bool checksChecksums, Capabilities& capabilities) {
  const std::optional<DatagramHeader> header = ReadHeader(datagram);
  if (!header) {
    return Verdict::Damaged;
  }
  if (header->isRmcpPlus || header->sessionId != 0 || header->number != tag) {
    return Verdict::Foreign;
  }
  const UnpackedIpmi15 packet;
  if (!packet.Unpack(datagram) || (checksChecksums && !packet.HasRightChecksums())) {
    return Verdict::Damaged;
  }
  if (!packet.IsCapabilities()) {
    return Verdict::Foreign;
  }
  const auto completionCode = packet.message.NumberAs<std::uint8_t>("comp_code");
  if (completionCode == 0 && fiid_obj_packet_valid(packet.message.Get()) != 1) {
    return Verdict::Damaged;
  }
  capabilities.completionCode = completionCode;
  if (completionCode == 0) {
    FillCapabilities(packet.message, login, capabilities);
  }
  return Verdict::Answer;
}

Datagram MakeOpenSessionRequest(std::uint8_t tag, std::uint8_t privilegeLevel,
                                const Algorithms& algorithms, const Handshake& handshake) {
  const FiidObject message(tmpl_rmcpplus_open_session_request);
  const bool isFilled =
      fill_rmcpplus_open_session(tag, privilegeLevel, handshake.remoteConsoleSessionId,
                                 algorithms.authentication, algorithms.integrity,
                                 algorithms.confidentiality, message.Get()) == 0;
  return isFilled ? PackOpening(IPMI_PAYLOAD_TYPE_RMCPPLUS_OPEN_SESSION_REQUEST, message)
                  : Datagram();
}

Verdict ReadOpenedSession(const Datagram& datagram, std::uint8_t tag, const Handshake& handshake,
                          OpenedSession& opened) {
  UnpackedPacket packet(tmpl_rmcpplus_open_session_response);
  std::uint8_t status{};
  const Verdict verdict = UnpackOpening(datagram, IPMI_PAYLOAD_TYPE_RMCPPLUS_OPEN_SESSION_RESPONSE,
                                        tag, packet, status);
  if (verdict != Verdict::Answer) {
    return verdict;
  }
  const auto id = packet.message.NumberAs<std::uint32_t>("managed_system_session_id");
  if (status == RMCPPLUS_STATUS_NO_ERRORS) {
    if (!IsForUs(packet.message, handshake)) {
      return Verdict::Foreign;
    }
    if (id == 0) {  // Stands for no session; requests would go without their codes.
      return Verdict::Damaged;
    }
  }
  opened = {status, packet.message.NumberAs<std::uint8_t>("maximum_privilege_level"), id};
  return Verdict::Answer;
}

Datagram MakeRakp1(std::uint8_t tag, const Login& login, const Handshake& handshake) {
  const FiidObject message(tmpl_rmcpplus_rakp_message_1);
  const auto& random = handshake.remoteConsoleRandomNumber;
  const bool isFilled =
      fill_rmcpplus_rakp_message_1(tag, handshake.managedSystemSessionId, random.data(),
                                   static_cast<unsigned int>(random.size()), login.privilegeLevel,
                                   IPMI_NAME_ONLY_LOOKUP, login.userName, login.userNameLength,
                                   message.Get()) == 0;
  return isFilled ? PackOpening(IPMI_PAYLOAD_TYPE_RAKP_MESSAGE_1, message) : Datagram();
}

Verdict ReadRakp2(const Datagram& datagram, std::uint8_t tag, const Login& login,
                  const Handshake& handshake, Rakp2& rakp2) {
  UnpackedPacket packet(tmpl_rmcpplus_rakp_message_2);
  Rakp2 read;
  const Verdict verdict =
      UnpackOpening(datagram, IPMI_PAYLOAD_TYPE_RAKP_MESSAGE_2, tag, packet, read.status);
  if (verdict != Verdict::Answer) {
    return verdict;
  }
  if (read.status == RMCPPLUS_STATUS_NO_ERRORS) {
    if (!IsForUs(packet.message, handshake)) {
      return Verdict::Foreign;
    }
    // A proof that was cut short would look like one of another password.
    if (packet.message.Bytes("key_exchange_authentication_code").size() !=
        ProofLength(login.algorithms.authentication)) {
      return Verdict::Damaged;
    }
    Copy(packet.message, "managed_system_random_number", read.managedSystemRandomNumber);
    Copy(packet.message, "managed_system_guid", read.managedSystemGuid);
    read.provesPassword = ProvesPassword(packet.message, login, handshake, read);
  }
  rakp2 = read;
  return Verdict::Answer;
}

Datagram MakeRakp3(std::uint8_t tag, const Login& login, const Handshake& handshake) {
  std::array<std::uint8_t, kProofCapacity> proof{};
  const auto& random = handshake.managedSystemRandomNumber;
  const int length = ipmi_calculate_rakp_3_key_exchange_authentication_code(
      login.algorithms.authentication, login.password, login.passwordLength, random.data(),
      static_cast<unsigned int>(random.size()), handshake.remoteConsoleSessionId,
      IPMI_NAME_ONLY_LOOKUP, login.privilegeLevel, login.userName, login.userNameLength,
      proof.data(), static_cast<unsigned int>(proof.size()));
  return length < 0 ? Datagram()
                    : PackRakp3(tag, RMCPPLUS_STATUS_NO_ERRORS, handshake, proof.data(),
                                static_cast<unsigned int>(length));
}

Datagram MakeRakp3Refusal(std::uint8_t tag, const Handshake& handshake) {
  return PackRakp3(tag, RMCPPLUS_STATUS_INVALID_INTEGRITY_CHECK_VALUE, handshake, nullptr, 0);
}

Verdict ReadRakp4(const Datagram& datagram, std::uint8_t tag, const Login& login,
                  const Handshake& handshake, const SessionKeys& keys, bool takesAnyCheckValue,
                  std::uint8_t& status) {
  UnpackedPacket packet(tmpl_rmcpplus_rakp_message_4);
  std::uint8_t readStatus{};
  const Verdict verdict =
      UnpackOpening(datagram, IPMI_PAYLOAD_TYPE_RAKP_MESSAGE_4, tag, packet, readStatus);
  if (verdict != Verdict::Answer) {
    return verdict;
  }
  if (readStatus == RMCPPLUS_STATUS_NO_ERRORS) {
    if (!IsForUs(packet.message, handshake)) {
      return Verdict::Foreign;
    }
    const bool needsNone = takesAnyCheckValue && login.algorithms.authentication ==
                                                     IPMI_AUTHENTICATION_ALGORITHM_RAKP_NONE;
    if (!needsNone && !HasRightIntegrityCheckValue(packet.message, login, handshake, keys)) {
      return Verdict::Damaged;
    }
  }
  status = readStatus;
  return Verdict::Answer;
}

}  // namespace Standalone
}  // namespace Tavrin
