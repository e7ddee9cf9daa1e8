// Everything that reads what people write, and the datagrams of the IPMI client. The first byte of
// the input is a letter that names the parser, the rest is the text, so that an input can be read
// and written by hand.

#include <freeipmi/freeipmi.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "fleet/HostsFile.h"
#include "fleet/Settings.h"
#include "fleet/TargetList.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/ipmi_client/OpeningMessages.h"
#include "platform/standalone/ipmi_client/SessionMessages.h"
#include "platform/standalone/logger/LogControl.h"
#include "reading/EnclosureSettings.h"
#include "simulator/Controller.h"
#include "simulator/EnclosureKind.h"
#include "simulator/Scenario.h"
#include "simulator/ScenarioValue.h"
#include "support/FileDescriptor.h"
#include "support/HostAndPort.h"
#include "support/HostRange.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/Password.h"

namespace Tavrin::Fuzz {
namespace {

using namespace Standalone;

constexpr const char* kSourceName = "the fuzzer";

/// Ends the fuzzer, which then keeps the input, when something does not hold that the code under
/// test promises. `promise` says what should have been.
void Require(bool holds, const char* promise) {
  if (!holds) {
    static_cast<void>(std::fprintf(stderr, "Broken promise: %s\n", promise));
    std::abort();
  }
}

bool IsPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// The sentence with which `parse` refuses the text; nothing when it accepts. Any other exception
/// ends the fuzzer.
template <typename Error, typename Parse>
std::optional<std::string> RefusalOf(Parse parse) {
  try {
    parse();
    return std::nullopt;
  } catch (const Error& error) {
    const std::string sentence = error.what();
    Require(IsPrintable(sentence) && sentence.find("expected ") != std::string::npos,
            "a refusal is one printable line that says what was expected");
    return sentence;
  }
}

void CheckHost(const std::string& text) {
  HostAndPort parsed;
  if (RefusalOf<UsageError>([&] { parsed = ParseHost(text); })) {
    return;
  }
  Require(!parsed.host.empty() && IsPrintable(parsed.host), "a host is a printable text");
  Require(text.find(parsed.host) != std::string::npos, "a host is part of the text");
  Require(parsed.port != 0, "a port is not 0");
  const HostAndPort again = ParseHost(AddressText(parsed.host, parsed.port.value_or(623)));
  Require(again.host == parsed.host && again.port == parsed.port.value_or(623),
          "a host survives being written and read again");
}

bool IsSame(const std::vector<HostAndPort>& some, const std::vector<HostAndPort>& others) {
  return std::equal(some.begin(), some.end(), others.begin(), others.end(),
                    [](const HostAndPort& one, const HostAndPort& other) {
                      return one.host == other.host && one.port == other.port;
                    });
}

void CheckFolding(const std::vector<HostAndPort>& hosts) {
  Require(IsSame(ExpandHosts(FoldHosts(hosts)), hosts), "folded hosts expand to the same");
}

void CheckHostRange(const std::string& text) {
  std::vector<HostAndPort> hosts;
  if (RefusalOf<UsageError>([&] { hosts = ExpandHosts(text); })) {
    return;
  }
  Require(!hosts.empty() && hosts.size() <= kMostHosts, "a range names 1 to 4096 hosts");
  Require(hosts.size() == 1 || IsHostRange(text), "what names several hosts is a range");
  for (const HostAndPort& place : hosts) {
    const std::string address = AddressText(place.host, place.port.value_or(623));
    Require(IsPrintable(address) && ParseHost(address).host == place.host, "a host can be read");
  }
  CheckFolding(hosts);
}

/// What is asked of the hosts file is asked once.
void CheckTargets(const HostsFile& file) {
  TargetRequest request;
  request.file = file;
  TargetList list;
  if (RefusalOf<UsageError>([&] { list = MakeTargetList(request); })) {
    Require(file.lines.empty(), "a hosts file that names a host is not refused");
    return;
  }
  std::vector<HostAndPort> places;
  std::set<std::string> texts;
  for (const Target& target : list.targets) {
    places.push_back({target.host, target.port});
    Require(texts.insert(AddressText(target.host, target.port)).second, "a host is asked once");
  }
  Require(places.size() <= kMostHosts, "at most 4096 hosts are asked");
  CheckFolding(places);
}

void CheckHostsFile(const std::string& text) {
  HostsFile file;
  const auto refusal = RefusalOf<UsageError>([&] { file = ParseHostsFile(text, kSourceName); });
  Require(!refusal || refusal->rfind(std::string(kSourceName) + ", line ", 0) == 0,
          "a refusal names its source and line");
  if (!refusal) {
    CheckTargets(file);
  }
}

void CheckPort(const std::string& text) {
  std::uint16_t port = 0;
  const auto refusal = RefusalOf<UsageError>([&] { port = ParsePort(text); });
  Require(refusal || std::stoul(text) == port, "a port is the number that was written");
}

std::optional<std::string> RefusalOfPassword(const std::string& text, std::string& password) {
  const FileDescriptor file(memfd_create("password", MFD_CLOEXEC));
  Require(pwrite(file.Get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
          "a file can be made");
  return RefusalOf<UsageError>([&] { ReadPasswordLine(file.Get(), kSourceName, password); });
}

void CheckPassword(const std::string& text) {
  std::string password;
  const auto refusal = RefusalOfPassword(text, password);
  std::string line = text.substr(0, text.find('\n'));
  if (line.size() < text.size() && !line.empty() && line.back() == '\r') {
    line.pop_back();
  }
  const bool isOne =
      !line.empty() && line.size() <= kMaxPasswordLength && line.find('\0') == std::string::npos;
  Require(refusal.has_value() != isOne, "a password has 1 to 20 bytes, and none is NUL");
  Require(password == (isOne ? line : ""), "a password is the line and nothing else");
  // Another of the same length.
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c != '\0'; }, '*');
  Require(refusal == RefusalOfPassword(line, password), "a refusal shows nothing of the password");
}

int ParseWorkaroundList(const std::string& text) {
  std::vector<std::string> names;
  std::istringstream stream(text);
  for (std::string name; std::getline(stream, name, ',');) {
    names.push_back(name);
  }
  return ParseWorkarounds(names);
}

void CheckSettings(const std::string& text) {
  using Row = std::tuple<int (*)(const std::string&), int, int>;
  for (const auto& [parse, least, most] : {Row(ParsePrivilege, 2, 4),
                                           {ParseCipherSuite, 0, 17},
                                           {ParseWorkaroundList, 0, 0x71},
                                           {ParseAttempts, 1, std::numeric_limits<int>::max()},
                                           {ParseSessionTimeout, 100, 600000}}) {
    std::optional<int> value;
    RefusalOf<UsageError>([&, parse = parse] { value = parse(text); });
    Require(!value || (*value >= least && *value <= most), "a setting is within its range");
  }
  const auto kind = Simulator::KindFromName(text);
  Require(!kind || Simulator::KindName(*kind) == text, "a kind of enclosure has one name");
}

/// To every command, known or not, with a few data bytes.
void CheckAnswers(const Simulator::Scenario& scenario) {
  Simulator::Controller controller(scenario);
  for (const auto& [netFn, data] :
       {std::pair<std::uint8_t, Simulator::Bytes>{0x06, {0x0F, 0xD0, 0x05, 0x99}},
        {0x32, {}},
        {0x32, {0x05}},
        {0x32, {0x05, 0x00}},
        {0x32, {0x01, 0x20, 0xF0}}}) {
    for (unsigned int command = 0; command < 256; ++command) {
      const Simulator::Reply reply =
          controller.Handle({netFn, static_cast<std::uint8_t>(command), data});
      Require(reply.answer.data.size() <= 200, "an answer fits");
    }
  }
}

/// The letter is the brace that every scenario begins with, so that files of scenarios are inputs.
void CheckScenario(const std::string& behindBrace) {
  using namespace Simulator;
  for (const EnclosureKind kind :
       {EnclosureKind::FirstGeneration, EnclosureKind::SecondGeneration253,
        EnclosureKind::SecondGeneration254}) {
    Scenario scenario;
    const auto refusal = RefusalOf<ScenarioError>(
        [&] { scenario = ParseScenario('{' + behindBrace, kSourceName, MakeEnclosure(kind)); });
    Require(!refusal || refusal->rfind(std::string(kSourceName) + ": ", 0) == 0,
            "a refusal names its source");
    if (!refusal) {
      CheckAnswers(scenario);
    }
  }
}

void CheckStrictNumber(const std::string& text) {
  const std::optional<int> number = Standalone::ParseStrictly(text);
  Require(!number || std::stoi(text) == *number, "a number is the one that was written");
}

std::string Unescaped(const std::string& escaped) {
  static const std::map<char, char> letters = {{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'\\', '\\'}};
  std::string text;
  for (std::size_t at = 0; at < escaped.size(); ++at) {
    if (escaped[at] != '\\') {
      text += escaped[at];
    } else if (escaped.at(++at) != 'x') {
      text += letters.at(escaped[at]);
    } else {
      text += static_cast<char>(std::stoi(escaped.substr(at + 1, 2), nullptr, 16));
      at += 2;
    }
  }
  return text;
}

void CheckEscaping(const std::string& text) {
  const std::string escaped = Standalone::EscapeControlBytes(text);
  Require(IsPrintable(escaped), "an escaped text is printable");
  Require(Unescaped(escaped) == text, "an escaped text tells every text from every other");
}

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

/// Reads a datagram as every answer that the IPMI client can wait for. The first byte chooses the
/// cipher suite; the client waits for the number and the session that the datagram names.
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

const std::map<char, void (*)(const std::string&)>& Checks() {
  static const std::map<char, void (*)(const std::string&)> checks = {
      {'h', CheckHost},     {'r', CheckHostRange}, {'f', CheckHostsFile},    {'p', CheckPort},
      {'w', CheckPassword}, {'s', CheckSettings},  {'n', CheckStrictNumber}, {'e', CheckEscaping},
      {'d', CheckDatagram}, {'{', CheckScenario},
  };
  return checks;
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string input(bytes, bytes + size);
  const auto& checks = Tavrin::Fuzz::Checks();
  const auto check = checks.find(input[0]);
  if (check == checks.end()) {
    // Keeps the input out of the corpus.
    return -1;
  }
  check->second(input.substr(1));
  return 0;
}
