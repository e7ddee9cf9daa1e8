#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <thread>
#include <utility>

#include "tests/doubles/Operations.h"
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
using testing::Pair;

using PartsTest = ScriptedEnclosure;

TEST_F(PartsTest, EverythingIsAskedOnceAndInOrder) {
  Steps partByPart = kBeginning;
  for (const Part part : kPartsToAskFor) {
    Read({part});
    const Steps asked = smm_.Asked();
    partByPart.insert(partByPart.end(), asked.begin() + kAfterBeginning, asked.end());
  }
  Read(kEverything);
  EXPECT_EQ(smm_.Asked(), partByPart);
  std::set<std::string> requests;
  for (const Double::Exchange& exchange : smm_.platform.exchanges) {
    requests.insert(exchange.RequestText());
  }
  // The version is in the status, which detection and construction have read before.
  EXPECT_EQ(requests.size(), smm_.platform.exchanges.size() - kAfterConstruction);
}

TEST_F(PartsTest, EveryOperationIsAskedButThoseOfTheirOwn) {
  Read(kEverything);
  for (const std::string& operation : Double::OperationNames()) {
    const bool isOfItsOwn = operation == "SelectPSU" || operation == "GetSMMStatus";
    const Steps asked = smm_.Asked();
    const bool isAsked = std::any_of(asked.begin(), asked.end(), [&](const std::string& step) {
      return step.substr(0, step.find(' ')) == operation;
    });
    EXPECT_NE(isAsked, isOfItsOwn) << operation;
  }
}

TEST_F(PartsTest, OrderIsThatOfTheListOfAllParts) {
  Read({Part::PsuStatus, Part::Identity, Part::Detection, Part::ChassisPower});
  EXPECT_THAT(observer_.parts,
              ElementsAre(Part::Detection, Part::Identity, Part::ChassisPower, Part::PsuStatus));
}

/// Whether the part stood in the reading when it was told.
class Reader : public Observer {
 public:
  void PartRead(const Reading& soFar, Part part) override {
    const std::map<Part, bool> isThere = {{Part::Detection, soFar.detection.has_value()},
                                          {Part::PowerCaps, soFar.powerCaps.has_value()},
                                          {Part::PsuSelection, soFar.psuSelection.has_value()}};
    told.emplace_back(part, isThere.at(part));
  }

  std::vector<std::pair<Part, bool>> told;
};

TEST_F(PartsTest, PartIsThereWhenItIsTold) {
  Reader reader;
  Enclosure(settings_).Read({Part::PowerCaps}, reader);
  Enclosure(settings_).SelectPsu(1, reader);
  EXPECT_THAT(reader.told,
              ElementsAre(Pair(Part::Detection, true), Pair(Part::PowerCaps, true),
                          Pair(Part::Detection, true), Pair(Part::PsuSelection, true)));
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

std::vector<bool> PartsIn(const Reading& reading) {
  return {reading.identity.has_value(),    reading.chassisPower.has_value(),
          reading.powerCaps.has_value(),   reading.nodeStatus.has_value(),
          reading.nodePower.has_value(),   reading.psuFans.has_value(),
          reading.psuFirmware.has_value(), reading.psuStatus.has_value()};
}

TEST_F(PartsTest, NoPartBringsAnother) {
  for (const Part part : kPartsToAskFor) {
    const std::vector<bool> parts = PartsIn(Read({part}));
    EXPECT_LE(std::count(parts.begin(), parts.end(), true), 1) << static_cast<int>(part);
  }
}

TEST_F(PartsTest, SelectionIsOfAPassOfItsOwn) {
  SelectPsu(3);
  EXPECT_THAT(observer_.parts, ElementsAre(Part::Detection, Part::PsuSelection));
  EXPECT_EQ(smm_.Asked(), kBeginning + Steps{"SelectPSU 3"});
  EXPECT_FALSE(Read({Part::PsuSelection}).psuSelection);
}

TEST_F(PartsTest, UnknownGenerationIsTheFailureOfTheWholePass) {
  smm_.Lose(0, FailureCause::Silence, "no answer");
  const Reading reading = Read(kEverything);
  ASSERT_TRUE(reading.failure);
  EXPECT_EQ(reading.failure->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.failure->cause.words, "no answer");
  EXPECT_GE(reading.failure->askedAt, reading.readAt);
  EXPECT_FALSE(reading.detection);
  EXPECT_THAT(observer_.parts, ElementsAre());
  EXPECT_EQ(smm_.Asked(), Steps{kInVain});
}

TEST_F(PartsTest, SmmThatWasLostFailsEveryQueryAndIsAskedOnce) {
  smm_.Lose(kAfterDetection, FailureCause::Silence, "no answer");
  const Reading reading = Read(kEverything);
  EXPECT_EQ(smm_.Asked(), Steps{kStatus} + Steps(kStatusReads + 1, kInVain));
  EXPECT_EQ(reading.detection->generation.status, StatusCode::Success);
  EXPECT_EQ(reading.detection->platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.identity->name.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.powerCaps->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.nodeStatus->back().status, StatusCode::NotConnected);
  EXPECT_EQ(reading.psuFans->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.psuStatus->status, StatusCode::NotConnected);
}

TEST_F(PartsTest, AddressNamesHostAndPort) {
  settings_.host = "2001:db8::1";
  settings_.port = 6230;
  smm_.platform.expectedSettings.address = settings_.host;
  smm_.platform.expectedSettings.port = settings_.port;
  EXPECT_EQ(Read().address, "[2001:db8::1]:6230");
}

TEST_F(PartsTest, EachQueryTellsWhenItWasAskedAndHowLongItTook) {
  constexpr milliseconds kShort{5};
  smm_.Change("GetSmmSN", [&](Double::Exchange&) { std::this_thread::sleep_for(kShort); });
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

TEST_F(PartsTest, ReadingAsNewSaysNothing) {
  EXPECT_EQ(Reading().duration, milliseconds(0));
  EXPECT_EQ(QueryOutcome().duration, milliseconds(0));
  EXPECT_EQ(QueryOutcome().status, StatusCode::Success);
  EXPECT_EQ(Number().absence, Absence::QueryFailed);
  EXPECT_EQ(PsuFans().slot, 0U);
  EXPECT_EQ(PsuFirmware().slot, 0U);
  EXPECT_EQ(PsuFlags().slot, 0U);
  EXPECT_EQ(PsuSelection().asked, 0);
  EXPECT_FALSE(PsuSelection().isSent);
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
