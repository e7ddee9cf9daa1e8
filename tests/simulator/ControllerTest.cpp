#include "simulator/Controller.h"

#include <gtest/gtest.h>

#include "simulator/EnclosureKind.h"

namespace Tavrin::Simulator {
namespace {

const Request kMachineType = {0x32, 0xB0, {0x05, 0x00}};
const Request kSerialNumber = {0x32, 0xB0, {0x05, 0x01}};
const Bytes kOwnMachineType = {'1', 'Q', 'A', '4', 0, 0, 0, 0};

Controller WithScenario(const std::string& overrides) {
  return Controller(ParseScenario(R"({"overrides": [)" + overrides + "]}", "test",
                                  MakeEnclosure(EnclosureKind::FirstGeneration)));
}

TEST(ScenarioOfAController, WithoutOverridesTheEnclosureAnswers) {
  const Reply reply = WithScenario("").Handle(kMachineType);
  EXPECT_EQ(reply.answer.data, kOwnMachineType);
  EXPECT_EQ(reply.delay.count(), 0);
  EXPECT_FALSE(reply.silent);
}

TEST(ScenarioOfAController, OverrideHoldsForItsCommandOnly) {
  Controller controller = WithScenario(R"({"command": "0xA8", "completionCode": "0xD5"})");
  EXPECT_EQ(controller.Handle({0x32, 0xA8, {}}).answer.completionCode, 0xD5);
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, kOwnMachineType);
}

TEST(ScenarioOfAController, OverrideWithDataHoldsForThatDataOnly) {
  Controller controller = WithScenario(R"({"command": "0xB0", "data": "05 01", "response": "41"})");
  EXPECT_EQ(controller.Handle(kSerialNumber).answer.data, Bytes{0x41});
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, kOwnMachineType);
}

TEST(ScenarioOfAController, OverrideWithEmptyDataHoldsForRequestsWithoutData) {
  Controller controller = WithScenario(R"({"command": "0xB0", "data": "", "response": "41"})");
  EXPECT_EQ(controller.Handle({0x32, 0xB0, {}}).answer.data, Bytes{0x41});
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, kOwnMachineType);
}

TEST(ScenarioOfAController, OverrideOfTheSameCommandUnderAnotherFunctionDoesNotHold) {
  Controller controller = WithScenario(R"({"netFn": "0x06", "command": "0x52", "response": "41"})");
  EXPECT_EQ(controller.Handle({0x32, 0x52, {}}).answer.completionCode, 0xC1);
  EXPECT_EQ(controller.Handle({0x06, 0x52, {}}).answer.data, Bytes{0x41});
}

TEST(ScenarioOfAController, OverrideEndsAfterItsNumberOfTimes) {
  Controller controller =
      WithScenario(R"({"command": "0xB0", "completionCode": "0xC0", "times": 2})");
  EXPECT_EQ(controller.Handle(kMachineType).answer.completionCode, 0xC0);
  EXPECT_EQ(controller.Handle(kMachineType).answer.completionCode, 0xC0);
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, kOwnMachineType);
}

TEST(ScenarioOfAController, NextOverrideTakesOverWhenTheFirstIsUsedUp) {
  Controller controller = WithScenario(
      R"({"command": "0xB0", "response": "41", "times": 1}, {"command": "0xB0", "response": "42"})");
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, Bytes{0x41});
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, Bytes{0x42});
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, Bytes{0x42});
}

TEST(ScenarioOfAController, DelayAloneKeepsTheEnclosuresAnswer) {
  const Reply reply = WithScenario(R"({"command": "0xB0", "delayMs": 250})").Handle(kMachineType);
  EXPECT_EQ(reply.answer.data, kOwnMachineType);
  EXPECT_EQ(reply.delay.count(), 250);
}

TEST(ScenarioOfAController, CompletionCodeCanComeWithData) {
  const Reply reply =
      WithScenario(R"({"command": "0xB0", "completionCode": "0xCB", "response": "01 02"})")
          .Handle(kMachineType);
  EXPECT_EQ(reply.answer.completionCode, 0xCB);
  EXPECT_EQ(reply.answer.data, (Bytes{0x01, 0x02}));
}

TEST(PsuSelection, StaysUntilAnotherPsuIsSelected) {
  Controller controller = WithScenario("");
  EXPECT_EQ(controller.Handle({0x32, 0xF4, {0x00}}).answer.data, Bytes{0x00});
  EXPECT_EQ(controller.Handle({0x32, 0xF4, {0x00, 0x02}}).answer.data, Bytes{0x02});
  EXPECT_EQ(controller.Handle({0x32, 0xF4, {0x01, 0x03}}).answer.completionCode, 0xCC);
  EXPECT_EQ(controller.Handle(kMachineType).answer.data, kOwnMachineType);
  EXPECT_EQ(controller.Handle({0x06, 0x52, {0x0F, 0xD0, 0x02, 0xFC}}).answer.completionCode, 0);
  EXPECT_EQ(controller.Handle({0x32, 0xF4, {0x00}}).answer.data, Bytes{0x02});
  EXPECT_EQ(controller.Handle({0x32, 0xF4, {0x00, 0x01}}).answer.data, Bytes{0x01});
  EXPECT_EQ(controller.Handle({0x32, 0xF4, {0x00}}).answer.data, Bytes{0x01});
}

TEST(ScenarioOfAController, SilenceIsPassedOn) {
  EXPECT_TRUE(WithScenario(R"({"command": "0xB0", "silent": true})").Handle(kMachineType).silent);
}

}  // namespace
}  // namespace Tavrin::Simulator
