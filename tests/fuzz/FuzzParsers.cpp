// Everything that reads what people write, and the datagrams of the IPMI client. The first byte of
// the input is a letter that names the parser, the rest is the text, so that an input can be read
// and written by hand.

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "reading/EnclosureSettings.h"
#include "reading/Wiping.h"
#include "simulator/Controller.h"
#include "simulator/EnclosureKind.h"
#include "simulator/Scenario.h"
#include "simulator/ScenarioValue.h"
#include "tests/fuzz/DatagramChecks.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/RecordChecks.h"
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
  const std::size_t firstOther = text.find_first_not_of('0');
  const std::string digits = firstOther == std::string::npos ? "" : text.substr(firstOther);
  Require(refusal.has_value() != IsNumber(digits, 1, 65535), "a port is a number from 1 to 65535");
  Require(refusal || std::to_string(port) == digits, "a port is the number that was written");
}

/// The first line of the text, as a password is read; `rest` takes what follows it.
std::string FirstLine(const std::string& text, std::string& rest) {
  const std::size_t end = text.find('\n');
  if (end == std::string::npos) {
    return text;
  }
  rest = text.substr(end + 1);
  const bool hasCarriageReturn = end > 0 && text[end - 1] == '\r';
  return text.substr(0, hasCarriageReturn ? end - 1 : end);
}

bool IsPassword(const std::string& line) {
  return !line.empty() && line.size() <= kMaxPasswordLength && line.find('\0') == std::string::npos;
}

/// Every sentence that refuses a password is one of these, whatever the password.
void CheckPasswordSentence(const std::optional<std::string>& refusal, const std::string& source) {
  const std::set<std::string> sentences = {
      "the password from " + source + " is empty; expected 1 to 20 bytes",
      "the password from " + source +
          " is longer than 20 bytes; expected 1 to 20 bytes, the most that IPMI 2.0 carries",
      "the password from " + source + " holds a NUL byte; expected one line of text",
      source + " holds more than one line; expected the password alone on one line",
  };
  Require(!refusal || sentences.count(*refusal) == 1, "a refusal shows nothing of the password");
}

/// A file that holds the text and is nowhere but in memory.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text) : descriptor_(memfd_create("password", 0)) {
    Require(fchmod(descriptor_, S_IRUSR) == 0 &&
                write(descriptor_, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
            "a file can be made");
    lseek(descriptor_, 0, SEEK_SET);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] int Descriptor() const { return descriptor_; }
  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

void CheckPassword(const std::string& text) {
  const MemoryFile file(text);
  std::string rest;
  const std::string line = FirstLine(text, rest);

  std::string password = "before";
  auto refusal =
      RefusalOf<UsageError>([&] { ReadPasswordLine(file.Descriptor(), kSourceName, password); });
  CheckPasswordSentence(refusal, kSourceName);
  Require(refusal.has_value() != IsPassword(line), "a password is one line of 1 to 20 bytes");
  Require(password == (refusal ? "before" : line), "a password is the line, and nothing else");

  const std::string source = "password file \"" + file.Path() + "\"";
  refusal = RefusalOf<UsageError>([&] { ReadPasswordFile(file.Path(), password); });
  CheckPasswordSentence(refusal, source);
  Require(refusal.has_value() != (IsPassword(line) && rest.empty()),
          "a password file holds the password alone");
  Require(refusal || password == line, "a password is what the file holds");

  const std::string value = text.c_str();
  refusal = RefusalOf<UsageError>([&] { TakeEnvironmentPassword(value.c_str(), password); });
  CheckPasswordSentence(refusal, "the environment variable IPMI_PASSWORD");
  Require(refusal.has_value() != IsPassword(value), "the environment's password is 1 to 20 bytes");
  Require(refusal || password == value, "a password is what the environment holds");

  WipeText(password);
  Require(password.empty(), "a wiped text is empty");
}

void CheckSettings(const std::string& text) {
  int value = 0;
  auto refusal = RefusalOf<UsageError>([&] { value = ParsePrivilege(text); });
  CheckSentence(refusal);
  Require(refusal || (value >= 2 && value <= 4), "a privilege level is 2, 3 or 4");

  refusal = RefusalOf<UsageError>([&] { value = ParseCipherSuite(text); });
  CheckSentence(refusal);
  Require(refusal || std::to_string(value) == text, "a cipher suite is its own id");
  Require(refusal || value <= 17, "a cipher suite is one of the standard's");

  std::vector<std::string> names(1);
  for (const char character : text) {
    if (character == ',') {
      names.emplace_back();
    } else {
      names.back() += character;
    }
  }
  refusal = RefusalOf<UsageError>([&] { value = ParseWorkarounds(names); });
  CheckSentence(refusal);
  Require(refusal || (value > 0 && (value & ~0x71) == 0), "workarounds are known flags");

  refusal = RefusalOf<UsageError>([&] { value = ParseAttempts(text); });
  CheckSentence(refusal);
  Require(refusal || value >= 1, "there is at least one attempt");

  refusal = RefusalOf<UsageError>([&] { value = ParseSessionTimeout(text); });
  CheckSentence(refusal);
  Require(refusal || (value >= 100 && value <= 600000), "a session time-out is 0.1 to 600 seconds");

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
  Require(IsPrintable(enclosure.machineType) &&
              enclosure.machineType.size() <= Simulator::kMaxMachineType &&
              IsPrintable(enclosure.serialNumber) &&
              enclosure.serialNumber.size() <= Simulator::kMaxSerialNumber &&
              IsPrintable(enclosure.name) && enclosure.name.size() <= Simulator::kMaxName &&
              IsPrintable(enclosure.buildName) &&
              enclosure.buildName.size() <= Simulator::kMaxBuildName,
          "the texts of an enclosure fit into its answers");
}

/// Every command that an enclosure has, each with a few data bytes.
void CheckAnswers(const Simulator::Scenario& scenario) {
  Simulator::Controller controller(scenario);
  const Simulator::Bytes commands = {0x52, 0x91, 0x92, 0x98, 0x9D, 0xA5, 0xA7, 0xA8, 0xB0, 0xF4};
  for (const std::uint8_t command : commands) {
    for (const Simulator::Bytes& data :
         {Simulator::Bytes{}, {0x05}, {0x05, 0x00}, {0x01, 0x20, 0xF0}, {0x0F, 0xD0, 0x05, 0x99}}) {
      const std::uint8_t netFn = command == 0x52 ? 0x06 : 0x32;
      const Simulator::Reply reply = controller.Handle({netFn, command, data});
      Require(reply.answer.data.size() <= 200, "an answer fits");
    }
  }
}

void CheckScenario(const std::string& text, Simulator::EnclosureKind kind) {
  Simulator::Scenario scenario;
  const auto refusal = RefusalOf<Simulator::ScenarioError>([&] {
    scenario = Simulator::ParseScenario(text, kSourceName, Simulator::MakeEnclosure(kind));
  });
  CheckSentence(refusal);
  Require(!refusal || refusal->rfind(std::string(kSourceName) + ": ", 0) == 0,
          "a refusal names its source");
  if (refusal) {
    return;
  }
  CheckEnclosure(scenario.enclosure);
  for (const Simulator::Override& override : scenario.overrides) {
    CheckOverride(override);
  }
  CheckAnswers(scenario);
}

void CheckStrictNumber(const std::string& text) {
  const std::optional<int> number = Standalone::ParseStrictly(text);
  const bool isNegative = !text.empty() && text[0] == '-';
  const std::string digits = isNegative ? text.substr(1) : text;
  const bool isNumber =
      !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
  Require(isNumber || !number, "a number is digits, with a minus sign at most");
  if (!isNumber) {
    return;
  }
  const std::size_t first = digits.find_first_not_of('0');
  const std::string plain = first == std::string::npos ? "0" : digits.substr(first);
  constexpr std::uint32_t kLargest = std::numeric_limits<int>::max();
  Require(number.has_value() == IsNumber(plain, 0, isNegative ? kLargest + 1U : kLargest),
          "a number is taken when it fits");
  Require(!number || std::to_string(*number) == (isNegative && plain != "0" ? "-" : "") + plain,
          "a number is the one that was written");
}

/// What EscapeControlBytes() wrote, as it was before.
std::string Unescaped(const std::string& escaped) {
  std::string text;
  for (std::size_t at = 0; at < escaped.size(); ++at) {
    if (escaped[at] != '\\') {
      text += escaped[at];
      continue;
    }
    const char kind = escaped.at(++at);
    if (kind == 'x') {
      text += static_cast<char>(std::stoi(escaped.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else {
      text += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : kind;
    }
  }
  return text;
}

void CheckEscaping(const std::string& text) {
  const std::string escaped = Standalone::EscapeControlBytes(text);
  Require(IsPrintable(escaped), "an escaped text is printable");
  Require(Unescaped(escaped) == text, "an escaped text shows all that was there");
}

/// Returns false when the letter names no parser.
bool RunParser(std::uint8_t letter, const std::string& text) {
  using Simulator::EnclosureKind;
  switch (letter) {
    case 'h':
      CheckHost(text);
      return true;
    case 'p':
      CheckPort(text);
      return true;
    case 'w':
      CheckPassword(text);
      return true;
    case 's':
      CheckSettings(text);
      return true;
    case 'n':
      CheckStrictNumber(text);
      return true;
    case 'e':
      CheckEscaping(text);
      return true;
    case 'd':
      CheckDatagram({text.begin(), text.end()});
      return true;
    case 'i':
      CheckScenario(text, EnclosureKind::FirstGeneration);
      return true;
    case 'j':
      CheckScenario(text, EnclosureKind::SecondGeneration253);
      return true;
    case 'k':
      CheckScenario(text, EnclosureKind::SecondGeneration254);
      return true;
    default:
      return false;
  }
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Tavrin::Fuzz::FuzzInput input(bytes, size);
  const std::uint8_t letter = input.Byte();
  // -1 keeps the input out of the corpus.
  return Tavrin::Fuzz::RunParser(letter, input.RestAsText()) ? 0 : -1;
}
