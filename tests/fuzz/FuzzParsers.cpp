// Everything that reads what people write, and the datagrams of the IPMI client. The first byte of
// the input is a letter that names the parser, the rest is the text, so that an input can be read
// and written by hand.

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "reading/EnclosureSettings.h"
#include "simulator/Controller.h"
#include "simulator/EnclosureKind.h"
#include "simulator/Scenario.h"
#include "simulator/ScenarioValue.h"
#include "support/FileDescriptor.h"
#include "tests/fuzz/DatagramChecks.h"
#include "tests/fuzz/Require.h"
#include "tools/smm-inventory/Host.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/Settings.h"
#include "tools/smm-inventory/UsageError.h"

namespace Tavrin::Fuzz {
namespace {

constexpr const char* kSourceName = "the fuzzer";

/// The sentence with which `parse` refuses the text; nothing when it accepts. Any other exception
/// ends the fuzzer.
template <typename Error, typename Parse>
std::optional<std::string> RefusalOf(Parse parse) {
  try {
    parse();
  } catch (const Error& error) {
    return error.what();
  }
  return std::nullopt;
}

/// A number as it is usually written, when the digits are one.
std::string WithoutLeadingZeros(std::string digits) {
  return digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
}

/// Holds for a text that is accepted, too: then there is no refusal to judge.
void CheckSentence(const std::optional<std::string>& refusal) {
  Require(!refusal || (IsPrintable(*refusal) && refusal->find("expected ") != std::string::npos),
          "a refusal is one printable line that says what was expected");
}

void CheckHost(const std::string& text) {
  HostAndPort parsed;
  const auto refusal = RefusalOf<UsageError>([&] { parsed = ParseHost(text); });
  CheckSentence(refusal);
  if (refusal) {
    return;
  }
  Require(!parsed.host.empty() && IsPrintable(parsed.host), "a host is a printable text");
  Require(text.find(parsed.host) != std::string::npos, "a host is part of the text");
  Require(parsed.port != 0, "a port is not 0");
  const HostAndPort again = ParseHost(AddressText(parsed.host, parsed.port.value_or(623)));
  Require(again.host == parsed.host && again.port == parsed.port.value_or(623),
          "a host survives being written and read again");
}

void CheckPort(const std::string& text) {
  std::uint16_t port = 0;
  const auto refusal = RefusalOf<UsageError>([&] { port = ParsePort(text); });
  CheckSentence(refusal);
  const std::string digits = WithoutLeadingZeros(text);
  Require(refusal.has_value() == (digits == "0" || !IsNumber(digits, 65535)),
          "a port is a number from 1 to 65535");
  Require(refusal || std::to_string(port) == digits, "a port is the number that was written");
}

/// A file that holds the text and is nowhere but in memory, opened at its beginning.
FileDescriptor MemoryFile(const std::string& text) {
  FileDescriptor file(memfd_create("password", MFD_CLOEXEC));
  Require(fchmod(file.Get(), S_IRUSR) == 0 &&
              pwrite(file.Get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
          "a file can be made");
  return file;
}

/// A password is what the text begins with, up to the end of a line. Every sentence that refuses
/// one is one of these, whatever the password.
void CheckPasswordFrom(const std::string& text, const std::string& source,
                       const std::function<void(std::string&)>& read) {
  const std::set<std::string> sentences = {
      "the password from " + source + " is empty; expected 1 to 20 bytes",
      "the password from " + source +
          " is longer than 20 bytes; expected 1 to 20 bytes, the most that IPMI 2.0 carries",
      "the password from " + source + " holds a NUL byte; expected one line of text",
      source + " holds more than one line; expected the password alone on one line",
  };
  std::string password;
  const auto refusal = RefusalOf<UsageError>([&] { read(password); });
  if (refusal) {
    Require(sentences.count(*refusal) == 1 && password.empty(),
            "a refusal shows nothing of the password");
    return;
  }
  Require(!password.empty() && password.size() <= kMaxPasswordLength &&
              password.find('\0') == std::string::npos,
          "a password has 1 to 20 bytes");
  const std::string rest = text.substr(password.size());
  Require(password + rest == text &&
              (rest.empty() || rest[0] == '\n' || rest.compare(0, 2, "\r\n") == 0),
          "a password is what the text begins with");
}

void CheckPassword(const std::string& text) {
  const FileDescriptor file = MemoryFile(text);
  const std::string path = "/proc/self/fd/" + std::to_string(file.Get());
  CheckPasswordFrom(text, kSourceName, [&](std::string& password) {
    ReadPasswordLine(file.Get(), kSourceName, password);
    Require(password.find('\n') == std::string::npos, "a password is one line");
  });
  CheckPasswordFrom(text, "password file \"" + path + "\"",
                    [&](std::string& password) { ReadPasswordFile(path, password); });
  const std::string value = text.c_str();
  CheckPasswordFrom(value, "the environment variable IPMI_PASSWORD", [&](std::string& password) {
    TakeEnvironmentPassword(value.c_str(), password);
  });
}

int ParseWorkaroundList(const std::string& text) {
  std::vector<std::string> names;
  std::istringstream stream(text);
  for (std::string name; std::getline(stream, name, ',');) {
    names.push_back(name);
  }
  const int flags = ParseWorkarounds(names);
  Require((flags & ~0x71) == 0, "workarounds are known flags");
  return flags;
}

void CheckSettings(const std::string& text) {
  struct Setting {
    int (*parse)(const std::string&);
    int smallest;
    int largest;
  };
  for (const Setting& setting : {Setting{ParsePrivilege, 2, 4},
                                 {ParseCipherSuite, 0, 17},
                                 {ParseWorkaroundList, 0, 0x71},
                                 {ParseAttempts, 1, std::numeric_limits<int>::max()},
                                 {ParseSessionTimeout, 100, 600000}}) {
    int value = setting.smallest;
    CheckSentence(RefusalOf<UsageError>([&] { value = setting.parse(text); }));
    Require(value >= setting.smallest && value <= setting.largest, "a setting is in its range");
  }
  const auto kind = Simulator::KindFromName(text);
  Require(!kind || Simulator::KindName(*kind) == text, "a kind of enclosure has one name");
}

void CheckOverride(const Simulator::Override& override) {
  Require(override.netFn == 0x32 || (override.netFn == 0x06 && override.command == 0x52),
          "an override is for a command that the simulator serves");
  Require(!override.times || (*override.times >= 1 && *override.times <= 1000000),
          "an override holds for 1 to 1000000 requests");
  Require(override.delay.count() >= 0 && override.delay.count() <= 60000,
          "an answer is at most a minute late");
  Require(!override.answer || override.answer->data.size() <= 200, "an answer fits");
  Require(!override.requestData || override.requestData->size() <= 200, "request data fit");
  const bool answers = override.answer.has_value() || override.delay.count() > 0;
  Require(override.silent != answers, "an override is silent, or answers");
}

void CheckEnclosure(const Simulator::EnclosureState& enclosure) {
  using namespace Simulator;
  for (const auto& [text, most] : {std::pair{enclosure.machineType, kMaxMachineType},
                                   {enclosure.serialNumber, kMaxSerialNumber},
                                   {enclosure.name, kMaxName},
                                   {enclosure.buildName, kMaxBuildName}}) {
    Require(IsPrintable(text) && text.size() <= most,
            "the texts of an enclosure fit into its answers");
  }
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
    CheckSentence(refusal);
    Require(!refusal || refusal->rfind(std::string(kSourceName) + ": ", 0) == 0,
            "a refusal names its source");
    CheckEnclosure(scenario.enclosure);
    for (const Override& override : scenario.overrides) {
      CheckOverride(override);
    }
    if (!refusal) {
      CheckAnswers(scenario);
    }
  }
}

void CheckStrictNumber(const std::string& text) {
  constexpr unsigned long kLargest = std::numeric_limits<int>::max();
  const std::string sign = text.substr(0, text.rfind('-', 0) == 0 ? 1 : 0);
  const std::string digits = WithoutLeadingZeros(text.substr(sign.size()));
  const std::optional<int> number = Standalone::ParseStrictly(text);
  Require(number.has_value() == IsNumber(digits, kLargest + sign.size()),
          "a number is taken when it is one that fits");
  Require(!number || std::to_string(*number) == (digits == "0" ? "" : sign) + digits,
          "a number is the one that was written");
}

void CheckEscaping(const std::string& text) {
  std::string bytewise;
  for (const char character : text) {
    bytewise += Standalone::EscapeControlBytes({character});
  }
  Require(IsPrintable(bytewise), "an escaped text is printable");
  Require(Standalone::EscapeControlBytes(text) == bytewise, "each byte is escaped on its own");
}

const std::map<char, void (*)(const std::string&)>& Checks() {
  static const std::map<char, void (*)(const std::string&)> checks = {
      {'h', CheckHost},         {'p', CheckPort},     {'w', CheckPassword}, {'s', CheckSettings},
      {'n', CheckStrictNumber}, {'e', CheckEscaping}, {'d', CheckDatagram}, {'{', CheckScenario},
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
