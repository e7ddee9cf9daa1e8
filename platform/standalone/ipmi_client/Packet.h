#pragma once

#include <cstdint>
#include <optional>

#include "platform/standalone/ipmi_client/Datagram.h"
#include "platform/standalone/ipmi_client/FiidObject.h"
#include "platform/standalone/ipmi_client/SessionKeys.h"

namespace Tavrin {
namespace Standalone {

/// How the packets of one session are protected.
struct Protection {
  Algorithms algorithms;
  const SessionKeys& keys;
  const void* password{};  ///< One integrity algorithm takes the password itself as its key.
  unsigned int passwordLength{};
};

/// What stands around a message of IPMI 2.0.
struct Envelope {
  std::uint8_t payloadType{};
  std::uint32_t sessionId{};
  std::uint32_t sequenceNumber{};
  std::uint8_t networkFunction{};          ///< Of an IPMI message; without meaning for the others.
  std::uint8_t requesterSequenceNumber{};  ///< Of an IPMI message, 0 to 63.
};

/// The message as a datagram; empty when memory or file descriptors are short.
Datagram Pack(const Envelope& envelope, const Protection& protection, const FiidObject& message);

/// What stands around a message. To make one anew takes FreeIPMI longer than to fill it, so each
/// thread keeps one.
struct PacketParts {
  /// This thread's, with what the packet before left in them.
  static PacketParts& OfThisThread();

  [[nodiscard]] bool AreThere() const;

  FiidObject rmcpHeader{tmpl_rmcp_hdr};
  FiidObject sessionHeader{tmpl_rmcpplus_session_hdr};
  FiidObject requestHeader{tmpl_lan_msg_hdr_rq};
  FiidObject answerHeader{tmpl_lan_msg_hdr_rs};
  FiidObject messageTrailer{tmpl_lan_msg_trlr};
  FiidObject sessionTrailer{tmpl_rmcpplus_session_trlr};
  FiidObject payload{tmpl_rmcpplus_payload};
};

/// A datagram of IPMI 2.0 taken apart. The message has the fields of the template that it is made
/// with; what stands around it holds until the thread packs or unpacks the next.
class UnpackedPacket {
 public:
  explicit UnpackedPacket(const fiid_field_t* fieldsOfMessage) : message(fieldsOfMessage) {}

  /// Returns false when the datagram has another form, or is damaged where its protection shows it.
  bool Unpack(const Datagram& datagram, const Protection& protection);

  /// Whether the two checksums of an IPMI message hold.
  [[nodiscard]] bool HasRightChecksums() const;

  [[nodiscard]] const FiidObject& SessionHeader() const { return parts_.sessionHeader; }
  [[nodiscard]] const FiidObject& MessageHeader() const { return parts_.answerHeader; }

  FiidObject message;

 private:
  PacketParts& parts_ = PacketParts::OfThisThread();
};

}  // namespace Standalone
}  // namespace Tavrin
