#include "platform/standalone/ipmi_client/ConnectSettings.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Tavrin {
namespace Standalone {
namespace {

using std::chrono::milliseconds;

TEST(ConnectSettings, DefaultsAreThoseOfARealController) {
  ConnectSettings settings;
  ASSERT_EQ(ReadConnectSettings("623", 3, settings).result, 0);
  EXPECT_EQ(settings.port, 623);
  EXPECT_EQ(settings.cipherSuite, 3);
  EXPECT_EQ(settings.privilegeLevel, 4);
  EXPECT_EQ(settings.workaroundFlags, 0U);
  EXPECT_EQ(settings.sessionTimeoutMs, 4500U);
}

ConnectSettings Read() {
  ConnectSettings settings;
  EXPECT_EQ(ReadConnectSettings("623", 3, settings).result, 0);
  return settings;
}

TEST(RepetitionInterval, GrowsFromAttemptToAttempt) {
  const ConnectSettings settings = Read();
  EXPECT_EQ(RepetitionInterval(settings, 0), milliseconds(1000));
  EXPECT_EQ(RepetitionInterval(settings, 1), milliseconds(2000));
  EXPECT_EQ(RepetitionInterval(settings, 2), milliseconds(4000));
  EXPECT_EQ(RepetitionInterval(settings, 3), milliseconds(4000));
  EXPECT_EQ(RepetitionInterval(settings, 1000), milliseconds(4000));
}

TEST(RepetitionInterval, ShrinksWithAShorterSessionTimeout) {
  const ScopedEnvironment session("IPMI_SESSION_TIMEOUT_MS", "450");
  EXPECT_EQ(RepetitionInterval(Read(), 0), milliseconds(100));
  EXPECT_EQ(RepetitionInterval(Read(), 1), milliseconds(200));
  EXPECT_EQ(RepetitionInterval(Read(), 2), milliseconds(400));
}

TEST(RepetitionInterval, DoesNotGrowWithALongerSessionTimeout) {
  const ScopedEnvironment session("IPMI_SESSION_TIMEOUT_MS", "600000");
  EXPECT_EQ(RepetitionInterval(Read(), 0), milliseconds(1000));
  EXPECT_EQ(RepetitionInterval(Read(), 2), milliseconds(4000));
}

TEST(RepetitionInterval, ConfiguredOneHoldsForEveryAttempt) {
  const ScopedEnvironment retransmission("IPMI_RETRANSMISSION_TIMEOUT_MS", "4499");
  EXPECT_EQ(RepetitionInterval(Read(), 0), milliseconds(4499));
  EXPECT_EQ(RepetitionInterval(Read(), 2), milliseconds(4499));
}

TEST(ConnectSettings, EveryPortIsTaken) {
  for (const int port : {1, 65535}) {
    ConnectSettings settings;
    EXPECT_EQ(ReadConnectSettings(std::to_string(port), 3, settings).result, 0);
    EXPECT_EQ(settings.port, port);
  }
}

TEST(ConnectSettings, EveryKnownCipherSuiteIsTakenAndNoOther) {
  const std::set<unsigned long> known = {0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17};
  for (unsigned long suite = 0; suite < 600; ++suite) {
    ConnectSettings settings;
    const bool isTaken = !ReadConnectSettings("623", suite, settings);
    EXPECT_EQ(isTaken, known.count(suite) == 1) << suite;
    const ScopedEnvironment configured("IPMI_CIPHER_SUITE", std::to_string(suite));
    EXPECT_EQ(!ReadConnectSettings("623", 3, settings), isTaken) << suite;
  }
}

TEST(ConnectSettings, GivenCipherSuiteIsNotLookedAtBehindAConfiguredOne) {
  const ScopedEnvironment suite("IPMI_CIPHER_SUITE", "17");
  ConnectSettings settings;
  EXPECT_FALSE(ReadConnectSettings("623", 99, settings));
}

TEST(ConnectSettings, FirstValueOutOfRangeIsTheOneThatIsTold) {
  const std::vector<std::string> keys = {"IPMI_CIPHER_SUITE", "IPMI_PRIVILEGE_LEVEL",
                                         "IPMI_SESSION_TIMEOUT_MS",
                                         "IPMI_RETRANSMISSION_TIMEOUT_MS", "IPMI_WORKAROUND_FLAGS"};
  std::vector<std::unique_ptr<ScopedEnvironment>> wrong;
  for (const std::string& key : keys) {
    wrong.push_back(std::make_unique<ScopedEnvironment>(key, "-7"));
  }
  ConnectSettings settings;
  EXPECT_EQ(ReadConnectSettings("0", 3, settings).words.rfind("the port is", 0), 0U);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const Failure failure = ReadConnectSettings("623", 3, settings);
    EXPECT_EQ(failure.words.rfind(keys[i] + " is", 0), 0U) << failure.words;
    EXPECT_EQ(failure.advice, "");
    wrong[i].reset();
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
      {"IPMI_RETRANSMISSION_TIMEOUT_MS", "9", "a whole number from 10 to 4499"},
      {"IPMI_RETRANSMISSION_TIMEOUT_MS", "4500", "a whole number from 10 to 4499"},
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
    EXPECT_EQ(failure.cause, FailureCause::BadSetting) << row.key;
    EXPECT_EQ(failure.words,
              std::string(row.key) + " is \"" + row.value + "\"; expected " + row.expected);
  }
}

}  // namespace
}  // namespace Standalone
}  // namespace Tavrin
