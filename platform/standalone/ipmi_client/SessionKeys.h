#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Tavrin {
namespace Standalone {

/// What a cipher suite stands for, in FreeIPMI's numbers. All 0 is no protection, as outside of a
/// session.
struct Algorithms {
  std::uint8_t authentication{};
  std::uint8_t integrity{};
  std::uint8_t confidentiality{};
};

/// Who logs in, at which privilege level and with which algorithms. The texts are the client's own
/// and outlive it; a null pointer stands for an empty one, as FreeIPMI wants it.
struct Login {
  Login(const std::string& userNameText, const std::string& passwordText);

  const char* userName;
  unsigned int userNameLength;
  const char* password;
  unsigned int passwordLength;
  std::uint8_t privilegeLevel{};
  Algorithms algorithms;
};

/// What both ends of a session tell each other while it opens, in IPMI's names.
struct Handshake {
  std::uint32_t remoteConsoleSessionId{};
  std::uint32_t managedSystemSessionId{};
  std::array<std::uint8_t, 16> remoteConsoleRandomNumber{};
  std::array<std::uint8_t, 16> managedSystemRandomNumber{};
  std::array<std::uint8_t, 16> managedSystemGuid{};
};

/// Draws a session id and a random number of our own. Returns false when the system has none.
bool DrawNumbers(Handshake& handshake);

/// The keys of a session, each as long as its algorithm has it; wiped at the end.
class SessionKeys {
 public:
  SessionKeys() = default;
  ~SessionKeys();
  SessionKeys(const SessionKeys&) = delete;
  SessionKeys& operator=(const SessionKeys&) = delete;

  struct Key {
    std::array<std::uint8_t, 64> bytes{};
    unsigned int length{};

    [[nodiscard]] const void* Data() const { return length != 0 ? bytes.data() : nullptr; }
  };

  /// Returns false when this machine cannot.
  bool Compute(const Login& login, const Handshake& handshake);

  [[nodiscard]] const Key& SessionIntegrity() const { return sessionIntegrity_; }
  [[nodiscard]] const Key& Integrity() const { return integrity_; }
  [[nodiscard]] const Key& Confidentiality() const { return confidentiality_; }

 private:
  Key sessionIntegrity_;  ///< IPMI's SIK, of which the other two are made.
  Key integrity_;
  Key confidentiality_;
};

}  // namespace Standalone
}  // namespace Tavrin
