#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"
#include "tests/support/Relay.h"
#include "tests/wire/WireTest.h"

// How a program learns whether an object knows its SMM, and what becomes of one that does not.

namespace Tavrin {
namespace {

using Standalone::DetectionOutcome;

const std::vector<std::string> kPlatform254 = {"--generation", "2", "--platform", "254"};

std::string LeastPower(SMMInventory& inventory) {
  ChassisPowerCon power;
  EXPECT_EQ(inventory.GetChassisPowerConsumption(power), StatusCode::Success);
  return power.minPower;
}

using Detection = WireTest;

TEST_F(Detection, SmmThatIsBusyAtFirstIsDetectedAllTheSame) {
  const SimulatedSmm simulator(
      kPlatform254,
      R"({"overrides": [{"command": "0xA8", "completionCode": "0xC0", "times": 2}]})");
  SMMInventory inventory(SettingsOf(simulator));
  EXPECT_EQ(Standalone::GetLastDetectionOutcome(), DetectionOutcome::Detected);
  EXPECT_EQ(LeastPower(inventory), "633");
}

TEST_F(Detection, SmmThatStaysBusyIsUnknown) {
  const SimulatedSmm simulator(
      kPlatform254,
      R"({"overrides": [{"command": "0xA8", "completionCode": "0xC0", "times": 3}]})");
  SMMInventory inventory(SettingsOf(simulator));
  EXPECT_EQ(Standalone::GetLastDetectionOutcome(), DetectionOutcome::Unknown);
}

TEST_F(Detection, AnswerLostOverAnOpenSessionIsAskedForAgain) {
  // One repetition, with which the exchange has used up the silence.
  Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 999);
  const SimulatedSmm simulator(
      kPlatform254, R"({"overrides": [{"command": "0xA8", "silent": true, "times": 2}]})");
  SMMInventory inventory(SettingsOf(simulator));
  EXPECT_EQ(Standalone::GetLastDetectionOutcome(), DetectionOutcome::Detected);
  EXPECT_EQ(LeastPower(inventory), "633");
}

TEST_F(Detection, LastExchangeTellsWhetherConstructionReadTheStatus) {
  const SimulatedSmm sound(kPlatform254);
  const SMMInventory known(SettingsOf(sound));
  EXPECT_TRUE(Standalone::GetLastExchange().isAnswered);
  EXPECT_EQ(Standalone::GetLastExchange().completionCode, 0);
  EXPECT_GE(Standalone::GetLastExchange().answerLength, 14U);

  const SimulatedSmm busy(kPlatform254,
                          R"({"overrides": [{"command": "0xA8", "completionCode": "0xC0"}]})");
  const SMMInventory unread(SettingsOf(busy));
  EXPECT_EQ(Standalone::GetLastExchange().completionCode, 0xC0);
  EXPECT_EQ(Standalone::GetLastDetectionOutcome(), DetectionOutcome::Unknown);
}

TEST_F(Detection, ObjectMadeWhileTheSmmIsAwayReadsWrongNumbersUntilANewOneIsMade) {
  auto simulator = std::make_unique<SimulatedSmm>(kPlatform254);
  Relay relay(simulator->Port());
  const TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator, relay.Port());
  simulator.reset();
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 100);
  Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 50);
  SMMInventory old(settings);
  EXPECT_EQ(Standalone::GetLastDetectionOutcome(), DetectionOutcome::Unknown);
  EXPECT_FALSE(Standalone::GetLastExchange().isAnswered);

  simulator = std::make_unique<SimulatedSmm>(kPlatform254);
  relay.Lead(simulator->Port());
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 1000);
  Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 500);
  // The request's byte 05 stands in front of the reading 0x0279, and is taken for its low byte.
  EXPECT_EQ(LeastPower(old), std::to_string(0x7905));

  SMMInventory renewed(settings);
  EXPECT_EQ(Standalone::GetLastDetectionOutcome(), DetectionOutcome::Detected);
  EXPECT_EQ(LeastPower(renewed), "633");
}

}  // namespace
}  // namespace Tavrin
