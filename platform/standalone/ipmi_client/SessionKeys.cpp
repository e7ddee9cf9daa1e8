#include "platform/standalone/ipmi_client/SessionKeys.h"

#include <freeipmi/freeipmi.h>
#include <unistd.h>

#include <cstring>

namespace Tavrin {
namespace Standalone {
namespace {

const char* NullWhenEmpty(const std::string& text) { return text.empty() ? nullptr : text.data(); }

}  // namespace

Login::Login(const std::string& userNameText, const std::string& passwordText)
    : userName(NullWhenEmpty(userNameText)),
      userNameLength(static_cast<unsigned int>(userNameText.size())),
      password(NullWhenEmpty(passwordText)),
      passwordLength(static_cast<unsigned int>(passwordText.size())) {}

bool DrawNumbers(Handshake& handshake) {
  std::uint32_t& sessionId = handshake.remoteConsoleSessionId;
  do {
    if (getentropy(&sessionId, sizeof sessionId) != 0) {
      return false;
    }
  } while (sessionId == 0);  // Stands for no session.
  auto& random = handshake.remoteConsoleRandomNumber;
  return getentropy(random.data(), random.size()) == 0;
}

SessionKeys::~SessionKeys() {
  for (Key* key : {&sessionIntegrity_, &integrity_, &confidentiality_}) {
    explicit_bzero(key->bytes.data(), key->bytes.size());
  }
}

bool SessionKeys::Compute(const Login& login, const Handshake& handshake) {
  // FreeIPMI sets a pointer to null where the suite has no such key.
  void* sessionIntegrity = sessionIntegrity_.bytes.data();
  void* integrity = integrity_.bytes.data();
  void* confidentiality = confidentiality_.bytes.data();
  for (Key* key : {&sessionIntegrity_, &integrity_, &confidentiality_}) {
    key->length = static_cast<unsigned int>(key->bytes.size());
  }
  return ipmi_calculate_rmcpplus_session_keys(
             login.algorithms.authentication, login.algorithms.integrity,
             login.algorithms.confidentiality, login.password, login.passwordLength, nullptr, 0,
             handshake.remoteConsoleRandomNumber.data(),
             static_cast<unsigned int>(handshake.remoteConsoleRandomNumber.size()),
             handshake.managedSystemRandomNumber.data(),
             static_cast<unsigned int>(handshake.managedSystemRandomNumber.size()),
             IPMI_NAME_ONLY_LOOKUP, login.privilegeLevel, login.userName, login.userNameLength,
             &sessionIntegrity, &sessionIntegrity_.length, &integrity, &integrity_.length,
             &confidentiality, &confidentiality_.length) == 0;
}

}  // namespace Standalone
}  // namespace Tavrin
