#pragma once

#include <array>
#include <cstdint>

#include "platform/standalone/ipmi_client/Datagram.h"
#include "platform/standalone/ipmi_client/SessionKeys.h"

namespace Tavrin {
namespace Standalone {

// The messages that open a session, none of them protected. Each request carries a message tag, 0
// to 63, that comes back in its answer; that of IPMI 1.5 carries it as its requester sequence
// number. What is made is empty when memory is short; what is read fills its last argument only
// when it is the answer.

/// Get Channel Authentication Capabilities, which still goes in a packet of IPMI 1.5.
Datagram MakeCapabilitiesRequest(std::uint8_t tag, std::uint8_t privilegeLevel);

struct Capabilities {
  std::uint8_t completionCode{};  ///< The others hold when it is 0.
  bool hasIpmi20{};
  bool isUserAllowed{};  ///< A login with or without name and password, as it is made.
  bool needsKg{};        ///< A key besides the password.
};

Verdict ReadCapabilities(const Datagram& datagram, std::uint8_t tag, const Login& login,
                         bool checksChecksums, Capabilities& capabilities);

/// `privilegeLevel` 0 asks for the highest that the controller grants.
Datagram MakeOpenSessionRequest(std::uint8_t tag, std::uint8_t privilegeLevel,
                                const Algorithms& algorithms, const Handshake& handshake);

struct OpenedSession {
  std::uint8_t status{};  ///< The others hold when it is 0.
  std::uint8_t maximumPrivilegeLevel{};
  std::uint32_t managedSystemSessionId{};
};

Verdict ReadOpenedSession(const Datagram& datagram, std::uint8_t tag, const Handshake& handshake,
                          OpenedSession& opened);

Datagram MakeRakp1(std::uint8_t tag, const Login& login, const Handshake& handshake);

struct Rakp2 {
  std::uint8_t status{};  ///< The others hold when it is 0.
  std::array<std::uint8_t, 16> managedSystemRandomNumber{};
  std::array<std::uint8_t, 16> managedSystemGuid{};
  bool provesPassword{};  ///< The controller knows the same one, as far as the suite asks.
};

Verdict ReadRakp2(const Datagram& datagram, std::uint8_t tag, const Login& login,
                  const Handshake& handshake, Rakp2& rakp2);

/// Empty also when the proof of the password cannot be computed.
Datagram MakeRakp3(std::uint8_t tag, const Login& login, const Handshake& handshake);

/// RAKP message 3 of somebody who does not take the controller's proof: it ends the session.
Datagram MakeRakp3Refusal(std::uint8_t tag, const Handshake& handshake);

/// Fills `status` with RAKP message 4's when it is the answer. Without an authentication algorithm
/// an integrity check value must not be there, unless `takesAnyCheckValue`.
Verdict ReadRakp4(const Datagram& datagram, std::uint8_t tag, const Login& login,
                  const Handshake& handshake, const SessionKeys& keys, bool takesAnyCheckValue,
                  std::uint8_t& status);

}  // namespace Standalone
}  // namespace Tavrin
