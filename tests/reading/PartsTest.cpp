#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "tests/reading/ScriptedEnclosure.h"

// Which parts a pass reads, in which order, and what it says of their times.

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;
using testing::Lt;

using PartsTest = ScriptedEnclosure;

TEST_F(PartsTest, EverythingIsAskedOnceAndInOrder) {
  Read(kEverything);
  EXPECT_THAT(
      TheScript().asked,
      ElementsAre("generation", "construction", "PSU status", "machine type", "serial number",
                  "firmware version", "name", "chassis power", "power caps", "status of node 1",
                  "status of node 2", "status of node 3", "status of node 4", "power of node 1",
                  "power of node 2", "power of node 3", "power of node 4", "fans", "firmware"));
}

TEST_F(PartsTest, OrderIsThatOfTheListOfAllParts) {
  Read({Part::PsuStatus, Part::Identity, Part::Detection, Part::ChassisPower});
  EXPECT_THAT(observer_.parts,
              ElementsAre(Part::Detection, Part::Identity, Part::ChassisPower, Part::PsuStatus));
}

TEST_F(PartsTest, WhatWasNotAskedForIsEmpty) {
  const Reading reading = Read({Part::PowerCaps});
  EXPECT_TRUE(reading.detection);
  EXPECT_TRUE(reading.powerCaps);
  EXPECT_FALSE(reading.failure);
  EXPECT_FALSE(reading.identity);
  EXPECT_FALSE(reading.chassisPower);
  EXPECT_FALSE(reading.nodeStatus);
  EXPECT_FALSE(reading.nodePower);
  EXPECT_FALSE(reading.psuFans);
  EXPECT_FALSE(reading.psuFirmware);
  EXPECT_FALSE(reading.psuStatus);
  EXPECT_FALSE(reading.psuSelection);
}

TEST_F(PartsTest, SelectionIsOfAPassOfItsOwn) {
  Enclosure(EnclosureSettings()).SelectPsu(3, observer_);
  EXPECT_THAT(observer_.parts, ElementsAre(Part::Detection, Part::PsuSelection));
  EXPECT_THAT(TheScript().asked,
              ElementsAre("generation", "construction", "PSU status", "selection of PSU 3"));
  EXPECT_FALSE(Read({Part::PsuSelection}).psuSelection);
}

TEST_F(PartsTest, UnknownGenerationIsTheFailureOfTheWholePass) {
  TheScript().generation = [](SMMIype&) {
    LoseConnection(FailureCause::Silence, "no answer");
    return 1;
  };
  const Reading reading = Read(kEverything);
  ASSERT_TRUE(reading.failure);
  EXPECT_EQ(reading.failure->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.failure->cause.words, "no answer");
  EXPECT_GE(reading.failure->askedAt, reading.readAt);
  EXPECT_FALSE(reading.detection);
  EXPECT_THAT(observer_.parts, ElementsAre());
  EXPECT_THAT(TheScript().asked, ElementsAre("generation"));
}

TEST_F(PartsTest, SmmThatWasLostFailsEveryQueryAndIsAskedOnce) {
  TheScript().construct = [] { EndUnanswered(FailureCause::Silence, "no answer"); };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) { return StatusCode::NotConnected; };
  const Reading reading = Read(kEverything);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
  EXPECT_EQ(reading.detection->generation.status, StatusCode::Success);
  EXPECT_EQ(reading.detection->platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.identity->name.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.powerCaps->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.nodeStatus->back().status, StatusCode::NotConnected);
  EXPECT_EQ(reading.psuFans->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.psuStatus->status, StatusCode::NotConnected);
}

TEST_F(PartsTest, AddressNamesHostAndPort) {
  EnclosureSettings settings;
  settings.host = "2001:db8::1";
  settings.port = 6230;
  EXPECT_EQ(Enclosure(settings).Read({}, observer_).address, "[2001:db8::1]:6230");
}

TEST_F(PartsTest, EachQueryTellsWhenItWasAskedAndHowLongItTook) {
  constexpr milliseconds kShort{5};
  TheScript().serialNumber = [&](std::string&) {
    std::this_thread::sleep_for(kShort);
    return StatusCode::Success;
  };
  const auto before = system_clock::now();
  const Reading reading = Read({Part::Identity});
  const QueryOutcome& machineType = reading.identity->machineType;
  const QueryOutcome& serialNumber = reading.identity->serialNumber;
  EXPECT_THAT(reading.readAt, Ge(before));
  EXPECT_THAT(machineType.askedAt, Ge(reading.readAt));
  EXPECT_THAT(serialNumber.askedAt, Ge(machineType.askedAt));
  EXPECT_THAT(serialNumber.duration, Ge(kShort));
  EXPECT_THAT(reading.identity->name.askedAt, Ge(serialNumber.askedAt + kShort));
  EXPECT_THAT(reading.duration, Ge(serialNumber.duration));
}

TEST_F(PartsTest, WhatTheConstructionReadIsAsOldAsThat) {
  const Detection detection = *Read().detection;
  EXPECT_THAT(detection.generation.askedAt, Le(detection.platformId.askedAt));
  EXPECT_THAT(detection.platformId.askedAt, Le(detection.psuSlotCount.askedAt));
  EXPECT_EQ(detection.nodeCount.askedAt, detection.platformId.askedAt);
  EXPECT_THAT(system_clock::time_point(), Lt(detection.generation.askedAt));
}

}  // namespace
}  // namespace Tavrin
