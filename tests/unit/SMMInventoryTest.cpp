#include "module/smm/smm_inventory/SMMInventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "tests/unit/PlatformDouble.h"

namespace Tavrin {
namespace {

using Double::StatusAnswer;
using Double::TestSettings;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

TEST_F(Facade, MachineTypeAndSerialNumberAreForwarded) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  std::string machineType;
  std::string serialNumber;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {'7', 'X', '0', '6'});
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {'J', '3'});
  EXPECT_EQ(inventory.GetSmmMT(machineType), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmSN(serialNumber), StatusCode::Success);
  EXPECT_EQ(machineType, "7X06");
  EXPECT_EQ(serialNumber, "J3");
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

TEST_F(Facade, DestructionSendsNothing) {
  platform.ExpectStatusReads(1, {0x01});
  auto inventory = std::make_unique<SMMInventory>(TestSettings());
  platform.ForgetWhatHappened();
  inventory.reset();
  EXPECT_THAT(platform.events, IsEmpty());
}

TEST_F(Facade, ExceptionOfConstructionReachesTheCaller) {
  platform.smmTypeException = std::make_exception_ptr(std::runtime_error("no type"));
  EXPECT_THROW(SMMInventory{TestSettings()}, std::runtime_error);
}

}  // namespace
}  // namespace Tavrin
