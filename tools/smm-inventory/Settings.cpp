#include "tools/smm-inventory/Settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/UsageError.h"

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
constexpr std::array<NamedValue, 12> kCipherSuites = {{
    {"0", 0},
    {"1", 1},
    {"2", 2},
    {"3", 3},
    {"6", 6},
    {"7", 7},
    {"8", 8},
    {"11", 11},
    {"12", 12},
    {"15", 15},
    {"16", 16},
    {"17", 17},
}};

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
    throw UsageError(fmt::format("{} \"{}\" is not known; expected one of {}", thing,
                                 Standalone::EscapeControlBytes(text), Names(table)));
  }
  return entry->value;
}

}  // namespace

int ParsePrivilege(const std::string& text) {
  return ValueOf(kPrivileges, "privilege level", text);
}

int ParseCipherSuite(const std::string& text) {
  return ValueOf(kCipherSuites, "cipher suite", text);
}

int ParseWorkarounds(const std::vector<std::string>& names) {
  unsigned int flags = 0;
  for (const std::string& name : names) {
    flags |= static_cast<unsigned int>(ValueOf(kWorkarounds, "workaround", name));
  }
  return static_cast<int>(flags);
}

std::string PrivilegeNames() { return Names(kPrivileges); }

std::string CipherSuiteIds() { return Names(kCipherSuites); }

std::string WorkaroundNames() { return Names(kWorkarounds); }

}  // namespace Tavrin
