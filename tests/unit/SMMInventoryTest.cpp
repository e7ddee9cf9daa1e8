#include "module/smm/smm_inventory/SMMInventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "tests/doubles/Allocations.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::StatusAnswer;
using Double::TestSettings;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Facade = Double::PlatformTest;

TEST_F(Facade, NodeCountIs12OnPlatform253AndAsksNobody) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  SMMInventory inventory(TestSettings());
  platform.ForgetWhatHappened();
  EXPECT_EQ(inventory.GetNodeNub(), 12UL);
  EXPECT_THAT(platform.events, IsEmpty());
}

TEST_F(Facade, NodeCountIs4OnAnyOtherPlatform) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFE, 0x03));
  SMMInventory inventory(TestSettings());
  EXPECT_EQ(inventory.GetNodeNub(), 4UL);
}

TEST_F(Facade, NodeCountIs4AfterAFailedStatusRead) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03), 0xC1);
  SMMInventory inventory(TestSettings());
  EXPECT_EQ(inventory.GetNodeNub(), 4UL);
}

TEST_F(Facade, StatusReadTakesSixExchangesAnd18SecondsAndLeavesTheNodeCount) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  platform.ForgetWhatHappened();
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  SMMStatus status;
  EXPECT_EQ(inventory.GetSMMStatus(status), StatusCode::Success);
  EXPECT_EQ(status.platformId, 253);
  EXPECT_EQ(status.psuSlotCount, 9);
  EXPECT_THAT(platform.pauses, ElementsAre(3, 3, 3, 3, 3, 3));
  EXPECT_EQ(inventory.GetNodeNub(), 4UL);
}

/// The operation, and the generation of the SMM.
class FacadeOperation : public Double::PlatformTest,
                        public testing::WithParamInterface<std::tuple<std::string, SMMIype>> {
 protected:
  FacadeOperation() {
    const SMMIype generation = std::get<SMMIype>(GetParam());
    platform.smmType = generation;
    platform.logThreshold = 0;
    platform.answerTo = [this, answerTo = Double::SampleAnswersOf(generation)](
                            const IPMICOMMAND& request) -> const Bytes& {
      sent.push_back({request.netFn, request.cmd});
      sent.back().insert(sent.back().end(), request.data.begin(), request.data.end());
      return answerTo(request);
    };
  }

  /// Calls the operation, of the second node or PSU, and forgets what was sent before.
  template <typename Inventory>
  std::string Ask(Inventory& inventory) {
    const auto& operation = Double::OperationNamed<Inventory>(std::get<std::string>(GetParam()));
    Double::Output output = Double::Marked(operation.fresh);
    sent.clear();
    EXPECT_EQ(operation.call(inventory, 2, output), StatusCode::Success);
    return Double::Text(output);
  }

  std::vector<Bytes> sent;
};

TEST_P(FacadeOperation, IsThatOfTheImplementation) {
  SMMInventory facade(TestSettings());
  Double::Implementation implementation(TestSettings());
  const std::string given = Ask(facade);
  const std::vector<Bytes> sentByTheFacade = sent;
  EXPECT_EQ(given, Ask(implementation));
  EXPECT_EQ(sentByTheFacade, sent);
  EXPECT_THAT(given, Not(HasSubstr("before")));
}

TEST_P(FacadeOperation, SendsAsOftenAsItsSampleAnswersTake) {
  SMMInventory facade(TestSettings());
  Ask(facade);
  const auto& operation = Double::OperationNamed<SMMInventory>(std::get<std::string>(GetParam()));
  const Double::Exchanges& exchanges = operation.exchanges;
  EXPECT_EQ(sent.size(), std::get<SMMIype>(GetParam()) == SMM_FIRST_GENERATION
                             ? exchanges.ofTwoPsus
                             : exchanges.ofNinePsus);
}

INSTANTIATE_TEST_SUITE_P(
    Every, FacadeOperation,
    testing::Combine(testing::ValuesIn(Double::OperationNames()),
                     testing::Values(SMM_FIRST_GENERATION, SMM_SECOND_GENERATION)),
    [](const auto& instance) {
      return std::get<std::string>(instance.param) + "OfSmmType" +
             std::to_string(static_cast<int>(std::get<SMMIype>(instance.param)));
    });

TEST_F(Facade, NegativePsuIsSelectedInVain) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  for (int i = 0; i < 6; ++i) {
    platform.Expect(0x32, 0xF4, {0x00, 0xFF}, {}, 0xC1);
  }
  EXPECT_EQ(inventory.SelectPSU(-1), StatusCode::NoUsableResult);
}

TEST_F(Facade, NodeQueriesReachNode4AndNotNode5) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  NodeStatus status;
  ChassisPowerCon power;
  platform.Expect(0x32, 0xA7, {0x04}, {0x80, 1, 2, 0x20});
  EXPECT_EQ(inventory.GetNodeStatus(4, status), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodeStatus(5, status), StatusCode::UnusableAnswer);
  platform.Expect(0x32, 0x98, {0x04}, {4, 0, 5, 0, 6, 0});
  EXPECT_EQ(inventory.GetNodePowerConsumption(4, power), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodePowerConsumption(5, power), StatusCode::UnusableAnswer);
}

TEST_F(Facade, NodeQueriesReachNode12OnPlatform253AndNotNode13) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  SMMInventory inventory(TestSettings());
  NodeStatus status;
  ChassisPowerCon power;
  platform.Expect(0x32, 0xA7, {0x0C}, {0x80, 1, 2, 0x20});
  EXPECT_EQ(inventory.GetNodeStatus(12, status), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodeStatus(13, status), StatusCode::UnusableAnswer);
  platform.Expect(0x32, 0x98, {0x0C}, {1, 0, 2, 0, 3, 0});
  EXPECT_EQ(inventory.GetNodePowerConsumption(12, power), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodePowerConsumption(13, power), StatusCode::UnusableAnswer);
}

TEST_F(Facade, StatusOfARefusedExchangeIsHandedOnByEveryQuery) {
  platform.expectedSettings.connectionKind = 3;
  SMMInventory inventory(platform.expectedSettings);
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    Double::Output output = operation.fresh;
    EXPECT_EQ(operation.call(inventory, 1, output), operation.exchanges.untilAcknowledged
                                                        ? StatusCode::NoUsableResult
                                                        : StatusCode::ConnectionKindNotAdmitted)
        << operation.name;
  }
}

TEST_F(Facade, CopiesShareOneImplementationBeyondTheFirst) {
  platform.ExpectStatusReads(1, {0x01});
  auto first = std::make_unique<SMMInventory>(TestSettings());
  SMMInventory copy = *first;
  first.reset();
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {'J', '3'});
  std::string serialNumber;
  EXPECT_EQ(copy.GetSmmSN(serialNumber), StatusCode::Success);
}

TEST_F(Facade, CountOfTheOwnersIsAllocatedApartAndLast) {
  platform.ExpectStatusReads(1, {0x01});
  AllocationCount atRelease;
  platform.onEvent = [&](const std::string&) { atRelease = AllocationsSoFar(); };
  const SMMInventory inventory(TestSettings());
  EXPECT_EQ(AllocationsSoFar().allocations - atRelease.allocations, 1U);
}

TEST_F(Facade, DestructionSendsNothing) {
  platform.ExpectStatusReads(1, {0x01});
  auto inventory = std::make_unique<SMMInventory>(TestSettings());
  platform.ForgetWhatHappened();
  inventory.reset();
  EXPECT_THAT(platform.events, IsEmpty());
}

TEST_F(Facade, ExceptionOfConstructionReachesTheCaller) {
  platform.onEvent = [](const std::string& event) {
    if (event == "SMM type asked") {
      throw std::runtime_error("no type");
    }
  };
  EXPECT_THROW(SMMInventory{TestSettings()}, std::runtime_error);
}

// Callers were compiled with these numbers, or compare with them without the names.
TEST(StatusCode, NumbersStayWhatTheyAre) {
  EXPECT_EQ(StatusCode::Success, 0);
  EXPECT_EQ(StatusCode::ConnectionKindNotAdmitted, 1);
  EXPECT_EQ(StatusCode::NotConnected, 2);
  EXPECT_EQ(StatusCode::UnusableAnswer, 3);
  EXPECT_EQ(StatusCode::NoUsableResult, 4);
}

TEST(InventoryRecords, NumbersStartAt0) {
  EXPECT_EQ(SMMStatus{}.platformId, 0);
  EXPECT_EQ(SMMStatus{}.psuSlotCount, 0);
  EXPECT_EQ(NodeStatus{}.permissionState, 0);
}

}  // namespace
}  // namespace Tavrin
