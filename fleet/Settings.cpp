#include "fleet/Settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/standalone/StrictNumber.h"
#include "reading/EnclosureSettings.h"
#include "support/EscapeControlBytes.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

struct NamedValue {
  std::string_view name;
  int value;
};

constexpr std::array<NamedValue, 3> kPrivileges = {{
    {"user", 2},
    {"operator", 3},
    {"administrator", 4},
}};

constexpr std::array<NamedValue, 4> kWorkarounds = {{
    {"authentication-capabilities", 0x01},
    {"open-session-privilege", 0x10},
    {"non-empty-integrity-check-value", 0x20},
    {"no-checksum-check", 0x40},
}};

// By id: the standard also numbers suites with xRC4, which the client does not speak.
constexpr std::array<int, 12> kCipherSuites = {0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17};

// In seconds, as the IPMI client takes them.
constexpr double kShortestSessionTimeout = 0.1;
constexpr double kLongestSessionTimeout = 600;

[[noreturn]] void RefuseChoice(const std::string& thing, const std::string& text,
                               const std::string& expected) {
  throw UsageError(
      fmt::format("{} is \"{}\"; expected one of {}", thing, EscapeControlBytes(text), expected));
}

template <typename Table>
std::string Names(const Table& table) {
  std::string text;
  for (const NamedValue& entry : table) {
    text += text.empty() ? "" : ", ";
    text += entry.name;
  }
  return text;
}

template <typename Table>
int ValueOf(const Table& table, const std::string& thing, const std::string& text) {
  const auto* const entry =
      std::find_if(std::begin(table), std::end(table),
                   [&](const NamedValue& candidate) { return candidate.name == text; });
  if (entry == std::end(table)) {
    RefuseChoice(thing, text, Names(table));
  }
  return entry->value;
}

}  // namespace

std::string ParseUserName(const std::string& text) {
  if (text.size() > kMaxUserNameLength) {
    throw UsageError(fmt::format("user name is \"{}\", {} bytes long; expected at most {} bytes",
                                 EscapeControlBytes(text), text.size(), kMaxUserNameLength));
  }
  if (text.empty() || text.find('\0') != std::string::npos) {
    throw UsageError(fmt::format("user name is \"{}\"; expected 1 to {} bytes, none of them zero",
                                 EscapeControlBytes(text), kMaxUserNameLength));
  }
  return text;
}

int ParsePrivilege(const std::string& text) {
  return ValueOf(kPrivileges, "privilege level", text);
}

int ParseCipherSuite(const std::string& text) {
  const auto* const id = std::find_if(kCipherSuites.begin(), kCipherSuites.end(),
                                      [&text](int known) { return std::to_string(known) == text; });
  if (id == kCipherSuites.end()) {
    RefuseChoice("cipher suite", text, CipherSuiteIds());
  }
  return *id;
}

int ParseWorkarounds(const std::vector<std::string>& names) {
  unsigned int flags = 0;
  for (const std::string& name : names) {
    flags |= static_cast<unsigned int>(ValueOf(kWorkarounds, "workaround", name));
  }
  return static_cast<int>(flags);
}

int ParseWholeNumber(const char* name, const std::string& text, int lowest, int highest) {
  const std::optional<int> number = Standalone::ParseStrictly(text);
  if (!number || *number < lowest || *number > highest) {
    throw UsageError(fmt::format("{} is \"{}\"; expected a whole number from {} to {}", name,
                                 EscapeControlBytes(text), lowest, highest));
  }
  return *number;
}

int ParseAttempts(const std::string& text) {
  return ParseWholeNumber("number of attempts", text, 1, std::numeric_limits<int>::max());
}

int ParseSessionTimeout(const std::string& text) {
  const char* const end = text.data() + text.size();
  double seconds = 0;
  const auto [stop, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
  // Said so that what is not a number is refused, too.
  const bool isInRange = seconds >= kShortestSessionTimeout && seconds <= kLongestSessionTimeout;
  if (error != std::errc() || stop != end || !isInRange) {
    throw UsageError(fmt::format("session time-out is \"{}\"; expected seconds from {} to {}",
                                 EscapeControlBytes(text), kShortestSessionTimeout,
                                 kLongestSessionTimeout));
  }
  return static_cast<int>(std::lround(seconds * 1000));
}

void RequireOnePort(const HostAndPort& place, std::uint16_t port) {
  if (place.port.value_or(port) != port) {
    throw UsageError(fmt::format(R"(port is "{}" and host is "{}"; expected the port in one place)",
                                 port, AddressText(place.host, *place.port)));
  }
}

std::string PrivilegeNames() { return Names(kPrivileges); }

std::string CipherSuiteIds() { return fmt::format("{}", fmt::join(kCipherSuites, ", ")); }

std::string WorkaroundNames() { return Names(kWorkarounds); }

}  // namespace Tavrin
