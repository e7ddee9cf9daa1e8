#include "platform/standalone/ipmi_client/ConnectSettings.h"

#include <gtest/gtest.h>

#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Tavrin {
namespace Standalone {
namespace {

/// When FreeIPMI gives up: at the first retransmission after the time-out, with waits that grow by
/// one interval after each pair.
unsigned int GivesUpAfterMs(const ConnectSettings& settings) {
  unsigned int elapsed = 0;
  for (unsigned int wait = 0; elapsed <= settings.sessionTimeoutMs; ++wait) {
    elapsed += (wait / 2 + 1) * settings.retransmissionTimeoutMs;
  }
  return elapsed;
}

TEST(ConnectSettings, DefaultsAreThoseOfARealController) {
  ConnectSettings settings;
  ASSERT_EQ(ReadConnectSettings("623", 3, settings).result, 0);
  EXPECT_EQ(settings.port, 623);
  EXPECT_EQ(settings.cipherSuite, 3);
  EXPECT_EQ(settings.privilegeLevel, 4);
  EXPECT_EQ(settings.workaroundFlags, 0U);
  EXPECT_EQ(settings.retransmissionTimeoutMs, 444U);
  EXPECT_EQ(GivesUpAfterMs(settings), 9U * 444U);
}

TEST(ConnectSettings, SilenceIsNoticedWithinTheSessionTimeout) {
  struct Row {
    unsigned int session;
    unsigned int retransmission;
  };
  for (const Row row : {Row{20, 10}, Row{20, 19}, Row{300, 150}, Row{1000, 400}, Row{1000, 999},
                        Row{4000, 500}, Row{4500, 500}, Row{20000, 1000}, Row{600000, 10}}) {
    const ScopedEnvironment session("IPMI_SESSION_TIMEOUT_MS", std::to_string(row.session));
    const ScopedEnvironment retransmission("IPMI_RETRANSMISSION_TIMEOUT_MS",
                                           std::to_string(row.retransmission));
    ConnectSettings settings;
    ASSERT_EQ(ReadConnectSettings("623", 3, settings).result, 0) << row.session;
    EXPECT_LE(settings.retransmissionTimeoutMs, row.retransmission);
    EXPECT_LT(settings.retransmissionTimeoutMs, settings.sessionTimeoutMs);
    EXPECT_LE(GivesUpAfterMs(settings), row.session);
    EXPECT_GE(GivesUpAfterMs(settings), row.session * 9 / 10);
  }
}

TEST(ConnectSettings, ConfiguredCipherSuiteWinsOverTheGivenOne) {
  const ScopedEnvironment suite("IPMI_CIPHER_SUITE", "17");
  ConnectSettings settings;
  ASSERT_EQ(ReadConnectSettings("623", 3, settings).result, 0);
  EXPECT_EQ(settings.cipherSuite, 17);
}

TEST(ConnectSettings, ConfiguredPrivilegeAndWorkaroundsAreTaken) {
  const ScopedEnvironment privilege("IPMI_PRIVILEGE_LEVEL", "2");
  const ScopedEnvironment workarounds("IPMI_WORKAROUND_FLAGS", "113");
  ConnectSettings settings;
  ASSERT_EQ(ReadConnectSettings("623", 3, settings).result, 0);
  EXPECT_EQ(settings.privilegeLevel, 2);
  EXPECT_EQ(settings.workaroundFlags, 113U);
}

TEST(ConnectSettings, ValueOutOfRangeIsNamedWithWhatWasExpected) {
  struct Row {
    const char* key;
    const char* value;
    const char* expected;
  };
  const char* const suites = "one of 0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16 and 17";
  const char* const flags =
      "a sum of 1 (authentication capabilities), 16 (open session privilege), 32 (non-empty "
      "integrity check value) and 64 (no checksum check)";
  const Row rows[] = {
      {"IPMI_SESSION_TIMEOUT_MS", "19", "a whole number from 20 to 600000"},
      {"IPMI_SESSION_TIMEOUT_MS", "-1", "a whole number from 20 to 600000"},
      {"IPMI_SESSION_TIMEOUT_MS", "600001", "a whole number from 20 to 600000"},
      {"IPMI_RETRANSMISSION_TIMEOUT_MS", "9", "a whole number from 10 to 3999"},
      {"IPMI_RETRANSMISSION_TIMEOUT_MS", "4000", "a whole number from 10 to 3999"},
      {"IPMI_PRIVILEGE_LEVEL", "1", "a whole number from 2 to 4"},
      {"IPMI_PRIVILEGE_LEVEL", "5", "a whole number from 2 to 4"},
      {"IPMI_WORKAROUND_FLAGS", "2", flags},
      {"IPMI_WORKAROUND_FLAGS", "128", flags},
      {"IPMI_WORKAROUND_FLAGS", "-1", flags},
      {"IPMI_CIPHER_SUITE", "-2", suites},
      {"IPMI_CIPHER_SUITE", "4", suites},
      {"IPMI_CIPHER_SUITE", "18", suites},
      {"IPMI_CIPHER_SUITE", "259", suites},
  };
  for (const Row& row : rows) {
    const ScopedEnvironment variable(row.key, row.value);
    ConnectSettings settings;
    const Failure failure = ReadConnectSettings("623", 3, settings);
    EXPECT_EQ(failure.result, ConnectResult::InvalidSetting) << row.key;
    EXPECT_EQ(failure.cause,
              std::string(row.key) + " is \"" + row.value + "\"; expected " + row.expected);
  }
}

}  // namespace
}  // namespace Standalone
}  // namespace Tavrin
