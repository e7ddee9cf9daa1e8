#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/GlobalConfig.h"
#include "reading/Enclosure.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSettings.h"
#include "tests/support/SimulatedSmm.h"
#include "tests/support/UdpPort.h"

// Enclosures of different kinds and conditions, read at once and again, over real IPMI 2.0.

namespace Tavrin {
namespace {

using Standalone::FailureCause;

const std::vector<std::string> kFirst = {"--generation", "1"};
const std::vector<std::string> kSecond253 = {"--generation", "2", "--platform", "253"};

const std::vector<Part> kParts = {Part::Identity, Part::ChassisPower, Part::PsuFans,
                                  Part::PsuStatus};

/// For a client that notices silence after a second.
EnclosureSettings SettingsAt(std::uint16_t port) {
  EnclosureSettings settings = SimulatedAt(port);
  settings.sessionTimeoutMs = 1000;
  return settings;
}

Reading ReadOnce(const EnclosureSettings& settings) {
  Observer nobody;
  return Enclosure(settings).Read(kParts, nobody);
}

/// One pass over each of two enclosures, on two threads at once.
std::pair<Reading, Reading> ReadBoth(const EnclosureSettings& one, const EnclosureSettings& other) {
  std::pair<Reading, Reading> readings;
  std::thread thread([&] { readings.first = ReadOnce(one); });
  readings.second = ReadOnce(other);
  thread.join();
  return readings;
}

void ExpectFirst(const Reading& reading) {
  ASSERT_TRUE(reading.detection);
  EXPECT_EQ(reading.detection->generation.value.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(reading.detection->psuSlotCount.value.value, 2);
  EXPECT_EQ(reading.detection->nodeCount.value.value, 4);
  EXPECT_EQ(reading.identity->serialNumber.value.value, "SIM10001");
  EXPECT_EQ(reading.identity->name.value.value, "simulated-first");
  EXPECT_EQ(reading.chassisPower->value.minimum.value, 625);
  EXPECT_EQ(reading.psuFans->value.at(1).speedA.value, 5780);
  EXPECT_EQ(reading.psuFans->value.at(1).speedB.absence, Absence::NoSecondFan);
}

void ExpectSecond253(const Reading& reading) {
  ASSERT_TRUE(reading.detection);
  EXPECT_EQ(reading.detection->generation.value.value, SMM_SECOND_GENERATION);
  EXPECT_EQ(reading.detection->platformId.value.value, 253);
  EXPECT_EQ(reading.detection->psuSlotCount.value.value, 9);
  EXPECT_EQ(reading.detection->nodeCount.value.value, 12);
  EXPECT_EQ(reading.identity->serialNumber.value.value, "SIM25301");
  EXPECT_EQ(reading.chassisPower->value.minimum.value, 2129);
  EXPECT_EQ(reading.psuFans->value.at(8).speedB.value, 11255);
  EXPECT_EQ(reading.psuStatus->value.at(7).present.value, true);
  EXPECT_EQ(reading.psuStatus->value.at(8).present.absence, Absence::FlagsNotTold);
}

TEST(Simulated, FirstGenerationIsReadBesideTheSecond) {
  const SimulatedSmm first(kFirst);
  const SimulatedSmm second(kSecond253);
  const auto [one, other] = ReadBoth(SettingsAt(first.Port()), SettingsAt(second.Port()));
  ExpectFirst(one);
  ExpectSecond253(other);
}

TEST(Simulated, SecondGenerationIsReadAfterTheFirstOnTheSameThread) {
  const SimulatedSmm first(kFirst);
  const SimulatedSmm second(kSecond253);
  ExpectFirst(ReadOnce(SettingsAt(first.Port())));
  ExpectSecond253(ReadOnce(SettingsAt(second.Port())));
}

TEST(Simulated, DeadSmmIsToldBesideALiveOne) {
  const UdpPort dead;
  const SimulatedSmm alive(kSecond253);
  const auto [one, other] = ReadBoth(SettingsAt(dead.Number()), SettingsAt(alive.Port()));
  ASSERT_TRUE(one.failure);
  EXPECT_EQ(one.failure->status, StatusCode::NotConnected);
  EXPECT_EQ(one.failure->cause.kind, FailureCause::Silence);
  EXPECT_FALSE(one.detection);
  ExpectSecond253(other);
}

TEST(Simulated, WrongPasswordIsToldBesideARightOneAndTriedOnce) {
  const SimulatedSmm refusing(kFirst);
  const SimulatedSmm open(kFirst);
  const Relay relay(refusing.Port());
  EnclosureSettings wrong = SettingsAt(relay.Port());
  wrong.password = "guess";
  const auto [one, other] = ReadBoth(wrong, SettingsAt(open.Port()));
  ASSERT_TRUE(one.failure);
  EXPECT_EQ(one.failure->status, StatusCode::NotConnected);
  EXPECT_EQ(one.failure->cause.kind, FailureCause::PasswordRefused);
  EXPECT_EQ(relay.SessionsAskedFor(), 1U);
  ExpectFirst(other);
}

TEST(Simulated, CipherSuiteThatOneSmmRefusesIsNotAskedOfTheOther) {
  const SimulatedSmm refusing(kFirst);
  const SimulatedSmm open(kFirst);
  EnclosureSettings other = SettingsAt(refusing.Port());
  other.cipherSuite = 17;
  const auto [refused, read] = ReadBoth(other, SettingsAt(open.Port()));
  ASSERT_TRUE(refused.failure);
  EXPECT_EQ(refused.failure->cause.kind, FailureCause::SuiteRefused);
  ExpectFirst(read);
}

/// Two passes over one address: of one SMM, then of another that has taken its place.
std::pair<Reading, Reading> ReadWhenReplaced(std::unique_ptr<SimulatedSmm> simulator,
                                             const std::vector<std::string>& replacement) {
  Relay relay(simulator->Port());
  Enclosure enclosure(SettingsAt(relay.Port()));
  Observer nobody;
  std::pair<Reading, Reading> readings;
  readings.first = enclosure.Read(kParts, nobody);
  simulator = std::make_unique<SimulatedSmm>(replacement);
  relay.Lead(simulator->Port());
  readings.second = enclosure.Read(kParts, nobody);
  return readings;
}

TEST(Simulated, RefusedPasswordIsTriedAnewInTheNextPass) {
  const auto [before, after] = ReadWhenReplaced(
      std::make_unique<SimulatedSmm>(kFirst, R"({"overrides": []})", "another"), kFirst);
  ASSERT_TRUE(before.failure);
  EXPECT_EQ(before.failure->cause.kind, FailureCause::PasswordRefused);
  ExpectFirst(after);
}

TEST(Simulated, SmmThatComesBackAsOneOfTheSecondGenerationIsReadAsSuch) {
  const auto [before, after] = ReadWhenReplaced(std::make_unique<SimulatedSmm>(kFirst), kSecond253);
  ExpectFirst(before);
  ExpectSecond253(after);
}

TEST(Simulated, SmmThatComesBackWithAnotherPlatformIsReadAsSuch) {
  const std::vector<std::string> second254 = {"--generation", "2", "--platform", "254"};
  const auto [before, after] =
      ReadWhenReplaced(std::make_unique<SimulatedSmm>(second254), kSecond253);
  EXPECT_EQ(before.detection->platformId.value.value, 254);
  ExpectSecond253(after);
}

TEST(Simulated, SmmThatIsAwayAndComesBackIsReadAgain) {
  auto simulator = std::make_unique<SimulatedSmm>(kFirst);
  Relay relay(simulator->Port());
  Enclosure enclosure(SettingsAt(relay.Port()));
  Observer nobody;
  ExpectFirst(enclosure.Read(kParts, nobody));
  relay.Break([](const Datagram&) { return std::vector<Departure>(); });
  EXPECT_EQ(enclosure.Read(kParts, nobody).failure->cause.kind, FailureCause::Silence);
  relay.Heal();
  ExpectFirst(enclosure.Read(kParts, nobody));
}

TEST(Simulated, SettingsOfAPassAreGoneWithIt) {
  const SimulatedSmm simulator(kFirst);
  ExpectFirst(ReadOnce(SettingsAt(simulator.Port())));
  EXPECT_EQ(GetGlobalConfigValue("SMM_TYPE", -1), -1);
  EXPECT_EQ(GetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", -1), -1);
  EXPECT_EQ(GetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", -1), -1);
}

TEST(Simulated, ThirtyTwoAreReadAtOnce) {
  constexpr std::size_t kCount = 32;
  std::vector<std::unique_ptr<SimulatedSmm>> simulators;
  for (std::size_t index = 0; index < kCount; ++index) {
    simulators.push_back(std::make_unique<SimulatedSmm>(index % 2 == 0 ? kFirst : kSecond253));
  }
  std::vector<Reading> readings(kCount);
  std::vector<std::thread> threads;
  for (std::size_t index = 0; index < kCount; ++index) {
    threads.emplace_back([&, index] {
      EnclosureSettings settings = SettingsAt(simulators[index]->Port());
      settings.sessionTimeoutMs = 20'000;
      readings[index] = ReadOnce(settings);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (std::size_t index = 0; index < kCount; ++index) {
    SCOPED_TRACE(index);
    index % 2 == 0 ? ExpectFirst(readings[index]) : ExpectSecond253(readings[index]);
  }
}

}  // namespace
}  // namespace Tavrin
