#include "platform/standalone/ipmi_client/ConnectSettings.h"

#include <freeipmi/freeipmi.h>

#include <algorithm>
#include <array>
#include <optional>

#include "platform/GlobalConfig.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {
namespace Standalone {
namespace {

constexpr int kHighestPort = 65535;
constexpr int kSuiteNotSet = -1;
constexpr int kDefaultSessionTimeoutMs = 4500;
constexpr int kIntervalOfEachAttempt = 0;
constexpr int kShortestTimeoutMs = 10;
constexpr int kLongestTimeoutMs = 600000;
constexpr int kKnownWorkarounds =
    IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_AUTHENTICATION_CAPABILITIES |
    IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_OPEN_SESSION_PRIVILEGE |
    IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_NON_EMPTY_INTEGRITY_CHECK_VALUE |
    IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_NO_CHECKSUM_CHECK;

/// The first thing out of range, in words; empty as long as there is none.
class Complaint {
 public:
  void Add(const std::string& name, const std::string& value, const std::string& expected) {
    if (text_.empty()) {
      text_.append(name)
          .append(" is \"")
          .append(EscapeControlBytes(value))
          .append("\"; expected ")
          .append(expected);
    }
  }
  [[nodiscard]] const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

std::string Range(int lowest, int highest) {
  return "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest);
}

/// The value of `key`, which must lie between `lowest` and `highest`.
unsigned int TakeInRange(const std::string& key, int value, int lowest, int highest,
                         Complaint& complaint) {
  if (value < lowest || value > highest) {
    complaint.Add(key, std::to_string(value), Range(lowest, highest));
  }
  return static_cast<unsigned int>(std::clamp(value, lowest, highest));
}

unsigned int ReadInRange(const std::string& key, int defaultValue, int lowest, int highest,
                         Complaint& complaint) {
  return TakeInRange(key, GetGlobalConfigValue(key, defaultValue), lowest, highest, complaint);
}

int ReadPort(const std::string& text, Complaint& complaint) {
  const int port = ParseStrictly(text).value_or(0);
  if (port < 1 || port > kHighestPort) {
    complaint.Add("the port", text, Range(1, kHighestPort));
  }
  return port;
}

bool IsKnownSuite(unsigned long suite) { return IPMI_CIPHER_SUITE_ID_SUPPORTED(suite) != 0; }

std::uint8_t ReadCipherSuite(unsigned long givenInCode, Complaint& complaint) {
  constexpr const char* key = "IPMI_CIPHER_SUITE";
  constexpr const char* expected = "one of 0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16 and 17";
  const int configured = GetGlobalConfigValue(key, kSuiteNotSet);
  if (configured != kSuiteNotSet) {
    if (!IsKnownSuite(static_cast<unsigned long>(configured))) {
      complaint.Add(key, std::to_string(configured), expected);
    }
    return static_cast<std::uint8_t>(configured);
  }
  if (!IsKnownSuite(givenInCode)) {
    complaint.Add("the cipher suite", std::to_string(givenInCode), expected);
  }
  return static_cast<std::uint8_t>(givenInCode);
}

unsigned int ReadWorkaroundFlags(Complaint& complaint) {
  constexpr const char* key = "IPMI_WORKAROUND_FLAGS";
  const int flags = GetGlobalConfigValue(key, IPMI_WORKAROUND_FLAGS_DEFAULT);
  if ((flags & ~kKnownWorkarounds) != 0) {
    complaint.Add(
        key, std::to_string(flags),
        "a sum of 1 (authentication capabilities), 16 (open session privilege), 32 (non-empty "
        "integrity check value) and 64 (no checksum check)");
  }
  return static_cast<unsigned int>(flags);
}

unsigned int ReadRetransmissionTimeout(const ConnectSettings& settings, Complaint& complaint) {
  constexpr const char* key = "IPMI_RETRANSMISSION_TIMEOUT_MS";
  const int timeout = GetGlobalConfigValue(key, kIntervalOfEachAttempt);
  if (timeout == kIntervalOfEachAttempt) {
    return kIntervalOfEachAttempt;
  }
  return TakeInRange(key, timeout, kShortestTimeoutMs,
                     static_cast<int>(settings.sessionTimeoutMs) - 1, complaint);
}

}  // namespace

Failure ReadConnectSettings(const std::string& port, unsigned long cipherSuite,
                            ConnectSettings& settings) {
  Complaint complaint;
  settings.port = ReadPort(port, complaint);
  settings.cipherSuite = ReadCipherSuite(cipherSuite, complaint);
  settings.privilegeLevel = static_cast<std::uint8_t>(
      ReadInRange("IPMI_PRIVILEGE_LEVEL", IPMI_PRIVILEGE_LEVEL_ADMIN, IPMI_PRIVILEGE_LEVEL_USER,
                  IPMI_PRIVILEGE_LEVEL_ADMIN, complaint));
  settings.sessionTimeoutMs = ReadInRange("IPMI_SESSION_TIMEOUT_MS", kDefaultSessionTimeoutMs,
                                          2 * kShortestTimeoutMs, kLongestTimeoutMs, complaint);
  settings.retransmissionTimeoutMs = ReadRetransmissionTimeout(settings, complaint);
  settings.workaroundFlags = ReadWorkaroundFlags(complaint);
  return complaint.Text().empty() ? Failure{}
                                  : Failure{ConnectResult::InvalidSetting, FailureCause::BadSetting,
                                            complaint.Text(), ""};
}

std::chrono::milliseconds RepetitionInterval(const ConnectSettings& settings,
                                             std::size_t failedAttempts) {
  constexpr std::array<unsigned int, 3> defaultsMs = {1000, 2000, 4000};
  if (settings.retransmissionTimeoutMs != kIntervalOfEachAttempt) {
    return std::chrono::milliseconds(settings.retransmissionTimeoutMs);
  }
  // A shorter session time-out has room for as many repetitions as the default one.
  const unsigned int interval = defaultsMs.at(std::min(failedAttempts, defaultsMs.size() - 1));
  return std::chrono::milliseconds(std::min<std::uint64_t>(
      interval, std::uint64_t{interval} * settings.sessionTimeoutMs / kDefaultSessionTimeoutMs));
}

}  // namespace Standalone
}  // namespace Tavrin
