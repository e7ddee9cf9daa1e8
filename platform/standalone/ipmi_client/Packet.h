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
  const void* password;  ///< One integrity algorithm takes the password itself as its key.
  unsigned int passwordLength;
};

/// What stands around a message of IPMI 2.0.
struct Envelope {
  std::uint8_t payloadType = 0;
  std::uint32_t sessionId = 0;
  std::uint32_t sequenceNumber = 0;
  std::uint8_t networkFunction = 0;  ///< Of an IPMI message; without meaning for the others.
  std::uint8_t number = 0;           ///< Requester sequence number of an IPMI message, 0 to 63.
};

/// The message as a datagram; empty when memory or file descriptors are short.
Datagram Pack(const Envelope& envelope, const Protection& protection, const FiidObject& message);

/// A datagram of IPMI 2.0 taken apart. The message has the fields of the template that it is made
/// with.
class UnpackedPacket {
 public:
  explicit UnpackedPacket(const fiid_field_t* fieldsOfMessage);

  /// Returns false when the datagram has another form, or is damaged where its protection shows it.
  bool Unpack(const Datagram& datagram, const Protection& protection);

  /// Whether the two checksums of an IPMI message hold.
  [[nodiscard]] bool HasRightChecksums() const;

  FiidObject sessionHeader;
  FiidObject messageHeader;
  FiidObject message;

 private:
  FiidObject rmcpHeader_;
  FiidObject messageTrailer_;
  FiidObject sessionTrailer_;
};

}  // namespace Standalone
}  // namespace Tavrin
