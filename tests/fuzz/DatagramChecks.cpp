#include <freeipmi/freeipmi.h>

#include <array>
#include <cstring>
#include <string>

#include "platform/standalone/ipmi_client/OpeningMessages.h"
#include "platform/standalone/ipmi_client/SessionMessages.h"
#include "tests/fuzz/Checks.h"

namespace Tavrin::Fuzz {
namespace {

using namespace Tavrin::Standalone;

const std::string kUserName = "admin";
const std::string kPassword = "sesame";

/// One end of a session that is about to open, or open.
struct Client {
  explicit Client(std::uint8_t suite) : login(kUserName, kPassword) {
    login.privilegeLevel = 4;
    ipmi_cipher_suite_id_to_algorithms(suite, &login.algorithms.authentication,
                                       &login.algorithms.integrity,
                                       &login.algorithms.confidentiality);
    Require(keys.Compute(login, handshake), "keys can be computed");
  }

  Login login;
  Handshake handshake;
  SessionKeys keys;
};

void CheckOpening(const Datagram& datagram, std::uint8_t number, Client& client) {
  Capabilities capabilities;
  ReadCapabilities(datagram, number, client.login, true, capabilities);
  OpenedSession opened;
  const Verdict asOpened = ReadOpenedSession(datagram, number, client.handshake, opened);
  Require(asOpened == Verdict::Answer || opened.managedSystemSessionId == 0,
          "only an answer tells the session's number");
  Rakp2 rakp2;
  const Verdict asRakp2 = ReadRakp2(datagram, number, client.login, client.handshake, rakp2);
  Require(asRakp2 == Verdict::Answer || !rakp2.provesPassword, "only an answer proves a password");
  std::uint8_t status = 0;
  ReadRakp4(datagram, number, client.login, client.handshake, client.keys, false, status);
}

void CheckSession(const Datagram& datagram, std::uint32_t sessionId, const Client& client) {
  const Protection protection = {client.login.algorithms, client.keys, client.login.password,
                                 client.login.passwordLength};
  for (const bool checksChecksums : {true, false}) {
    SessionAnswer answer;
    const Verdict verdict = ReadAnswer(
        datagram, protection, {sessionId, 0, 0x06, 0x01, std::nullopt, checksChecksums}, answer);
    Require(verdict == Verdict::Answer || answer.data.empty(), "only an answer has data");
    Require(answer.data.size() <= datagram.size(), "data are part of the datagram");
  }
}

/// The session that an answer to an opening message is for, as it says itself.
std::uint32_t RemoteConsoleSessionId(const Datagram& datagram) {
  constexpr std::size_t kSessionIdAt = 20;
  std::uint32_t id = 0;
  if (datagram.size() >= kSessionIdAt + sizeof id) {
    std::memcpy(&id, datagram.data() + kSessionIdAt, sizeof id);
  }
  return id;
}

}  // namespace

void CheckDatagram(const std::string& input) {
  static const int isReady = ipmi_rmcpplus_init();
  Require(isReady == 0, "the cryptography is ready");
  constexpr std::array<std::uint8_t, 12> suites = {0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17};
  const std::size_t choice = input.empty() ? 0 : static_cast<unsigned char>(input[0]);
  Client client(suites[choice % suites.size()]);
  const Datagram datagram(input.begin() + (input.empty() ? 0 : 1), input.end());
  client.handshake.remoteConsoleSessionId = RemoteConsoleSessionId(datagram);
  const DatagramHeader header = ReadHeader(datagram).value_or(DatagramHeader());
  CheckOpening(datagram, header.number, client);
  CheckSession(datagram, header.sessionId, client);
}

}  // namespace Tavrin::Fuzz
