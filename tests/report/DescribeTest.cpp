#include "report/Describe.h"

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "report/Words.h"
#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> KeysOf(const Reading& reading) {
  std::vector<std::string> keys;
  for (const Answer& answer : AllAnswers(reading)) {
    keys.push_back(answer.key);
  }
  return keys;
}

TEST(Describe, AnswersComeInTheOrderOfReading) {
  EXPECT_THAT(
      KeysOf(ExampleReading()),
      ElementsAre("generation", "platformId", "psuSlotCount", "nodeCount", "machineType",
                  "serialNumber", "firmwareVersion", "name", "chassisPower", "powerCaps",
                  "nodeStatus", "nodeStatus", "nodeStatus", "nodeStatus", "nodePower", "nodePower",
                  "nodePower", "nodePower", "psuFans", "psuFirmware", "psuStatus"));
  EXPECT_EQ(KeysOf(SelectionReading({}, {})).back(), "psuSelection");
}

TEST(Describe, AnswersHaveANameForPeople) {
  std::vector<std::string> names;
  for (const Answer& answer : AllAnswers(ExampleReading())) {
    names.push_back(answer.name);
  }
  EXPECT_THAT(names, ElementsAre("generation", "platform id", "PSU slots", "nodes", "machine type",
                                 "serial number", "firmware version", "name", "chassis power",
                                 "power caps", "node status", "node status", "node status",
                                 "node status", "node power", "node power", "node power",
                                 "node power", "PSU fans", "PSU firmware", "PSU status"));
  EXPECT_EQ(AllAnswers(SelectionReading({}, {})).back().name,
            "acknowledgement of the PSU selection");
}

TEST(Describe, PassWithoutQueriesHasNoAnswers) {
  EXPECT_THAT(AllAnswers(FailedReading()), IsEmpty());
}

TEST(Describe, AnswerKeepsTheOutcomeOfItsQuery) {
  Reading reading = ExampleReading();
  reading.identity->name = Disconnected<Text>();
  const Answer answer = AllAnswers(reading).at(7);
  EXPECT_EQ(answer.outcome.status, StatusCode::NotConnected);
  EXPECT_EQ(answer.outcome.cause.words, "no answer");
  EXPECT_EQ(answer.outcome.duration.count(), 7);
}

TEST(Describe, PartThatWasNotAskedForMakesNoSection) {
  EXPECT_FALSE(Describe(ExampleReading(), Part::PsuSelection).has_value());
  EXPECT_TRUE(Describe(ExampleReading(), Part::PsuStatus).has_value());
}

/// The title of the part's section, then the fields of its last row: key, label and text.
std::vector<std::string> LastRow(const Reading& reading, Part part) {
  const Section section = Describe(reading, part).value();
  std::vector<std::string> lines = {section.title};
  for (const Field& field : section.answers.back().rows.back().fields) {
    lines.push_back(field.key + " | " + field.label + " | " + field.text.value_or("?"));
  }
  return lines;
}

TEST(Describe, ChassisAndNodesHaveThePowerReadings) {
  EXPECT_THAT(LastRow(ExampleReading(), Part::ChassisPower),
              ElementsAre("chassis power", "minPower | minimum | 0", "avgPower | average | 350",
                          "maxPower | maximum | 65535"));
  EXPECT_THAT(LastRow(ExampleReading(), Part::NodePower),
              ElementsAre("node power", "minPower | minimum | N/A", "avgPower | average | N/A",
                          "maxPower | maximum | 410"));
}

TEST(Describe, PowerCapsHaveTheRangeAndThreeCaps) {
  EXPECT_THAT(LastRow(ExampleReading(), Part::PowerCaps),
              ElementsAre("power caps", "minCap | range minimum | 1", "maxCap | range maximum | 2",
                          "protectiveCap | protective cap | N/A", "userCap | user cap | 4",
                          "thermalCap | thermal cap | 5"));
}

TEST(Words, EachStateHasAWordOfItsOwn) {
  const std::map<NodePowerState, std::string> powerStates = {
      {NodePowerState::On, "on"},
      {NodePowerState::Off, "off"},
      {NodePowerState::NoPermission, "noPermission"},
      {NodePowerState::PowerFault, "powerFault"},
      {NodePowerState::Fault, "fault"}};
  for (const auto& [state, word] : powerStates) {
    EXPECT_EQ(Word(state), word);
  }
  const std::map<PsuFanState, std::string> fanStates = {{PsuFanState::Normal, "normal"},
                                                        {PsuFanState::Abnormal, "abnormal"},
                                                        {PsuFanState::NotPresent, "notPresent"},
                                                        {PsuFanState::Unknown, "unknown"}};
  for (const auto& [state, word] : fanStates) {
    EXPECT_EQ(Word(state), word);
  }
  EXPECT_EQ(Word(NodeWidth::Half), "half");
  EXPECT_EQ(Word(NodeWidth::Full), "full");
  EXPECT_EQ(Word(NodeWidth::Other), "other");
  EXPECT_EQ(Word(SMM_FIRST_GENERATION), "first");
  EXPECT_EQ(Word(SMM_SECOND_GENERATION), "second");
  EXPECT_EQ(Word(static_cast<SMMIype>(7)), "unknown");
}

}  // namespace
}  // namespace Tavrin
