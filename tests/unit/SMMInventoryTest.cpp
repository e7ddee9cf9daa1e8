#include "module/smm/smm_inventory/SMMInventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/doubles/AllocationCount.h"
#include "tests/unit/PlatformTest.h"

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
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {'1', 'A', 'B', '2'});
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {'J', '3'});
  EXPECT_EQ(inventory.GetSmmMT(machineType), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmSN(serialNumber), StatusCode::Success);
  EXPECT_EQ(machineType, "1AB2");
  EXPECT_EQ(serialNumber, "J3");
}

TEST_F(Facade, VersionAndNameAreForwarded) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  std::string version;
  std::string name;
  platform.Expect(0x32, 0xA8, {}, {0x01, 0x05, 0, 0, 0, 'U', '7'});
  platform.Expect(0x32, 0xB0, {0x05, 0x0B}, {'s', 'm', 'm'});
  EXPECT_EQ(inventory.GetSmmVersion(version), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmName(name), StatusCode::Success);
  EXPECT_EQ(version, "U7-1.05");
  EXPECT_EQ(name, "smm");
}

TEST_F(Facade, PowerQueriesAreForwarded) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  ChassisPowerCon chassis;
  ChassisPowerCap cap;
  ChassisPowerCon node;
  platform.Expect(0x32, 0x98, {0x05}, {1, 0, 2, 0, 3, 0});
  platform.Expect(0x32, 0x9D, {0x05}, {1, 0, 2, 0, 3, 0, 4, 0, 5, 0});
  platform.Expect(0x32, 0x98, {0x02}, {4, 0, 5, 0, 6, 0});
  EXPECT_EQ(inventory.GetChassisPowerConsumption(chassis), StatusCode::Success);
  EXPECT_EQ(inventory.GetChassisPowerCap(cap), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodePowerConsumption(2, node), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodePowerConsumption(5, node), StatusCode::UnusableAnswer);
  EXPECT_EQ(chassis.maxPower, "3");
  EXPECT_EQ(cap.thermalCap, "5");
  EXPECT_EQ(node.maxPower, "6");
}

TEST_F(Facade, PsuListsAreForwarded) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  std::vector<PSUFanSpeed> fans;
  std::vector<PSUFwInfo> firmware;
  std::vector<PSUStatus> psus;
  for (const std::uint8_t slot : Double::Bytes{1, 2}) {
    platform.Expect(0x32, 0xA5, {slot}, {1, 0, 2, 2});
  }
  for (const std::uint8_t bus : Double::Bytes{0x0F, 0x0D}) {
    platform.Expect(0x06, 0x52, {bus, 0xD0, 0x02, 0xFC}, {0x0A, 0x01});
  }
  for (const std::uint8_t bus : Double::Bytes{0x0F, 0x0D}) {
    platform.Expect(0x06, 0x52, {bus, 0xD0, 0x05, 0x99}, {0x04, 'A', 'B', 'C', 'D'});
  }
  for (const std::uint8_t bus : Double::Bytes{0x0F, 0x0D}) {
    platform.Expect(0x06, 0x52, {bus, 0xD0, 0x20, 0xF0}, {0x0A, 0x01});
  }
  platform.Expect(0x32, 0x91, {}, {0x00, 0x00, 0x03, 0x01, 0x00, 0x00});
  EXPECT_EQ(inventory.GetPSUFanSpeed(fans), StatusCode::Success);
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), StatusCode::Success);
  EXPECT_EQ(inventory.GetPSUStatus(psus), StatusCode::Success);
  ASSERT_EQ(fans.size(), 2U);
  EXPECT_EQ(fans[1].name, "PSU2");
  ASSERT_EQ(firmware.size(), 2U);
  EXPECT_EQ(firmware[1].identifier, "PSUABCDa.01");
  ASSERT_EQ(psus.size(), 2U);
  EXPECT_EQ(psus[1].powerGood, "not power good");
}

TEST_F(Facade, PsuSelectionIsForwarded) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x11});
  EXPECT_EQ(inventory.SelectPSU(2), StatusCode::Success);
  for (int i = 0; i < 6; ++i) {
    platform.Expect(0x32, 0xF4, {0x00, 0xFF}, {}, 0xC1);
  }
  EXPECT_EQ(inventory.SelectPSU(-1), StatusCode::NoUsableResult);
}

TEST_F(Facade, NodeStatusIsForwarded) {
  platform.ExpectStatusReads(1, {0x01});
  SMMInventory inventory(TestSettings());
  NodeStatus node;
  platform.Expect(0x32, 0xA7, {0x04}, {0x80, 1, 2, 0x20});
  EXPECT_EQ(inventory.GetNodeStatus(4, node), StatusCode::Success);
  EXPECT_EQ(inventory.GetNodeStatus(5, node), StatusCode::UnusableAnswer);
  EXPECT_EQ(node.powerState, "Power ON");
  EXPECT_EQ(node.permissionState, 32);
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
  std::string text;
  ChassisPowerCon power;
  ChassisPowerCap cap;
  std::vector<PSUFanSpeed> fans;
  std::vector<PSUFwInfo> firmware;
  std::vector<PSUStatus> psus;
  NodeStatus node;
  SMMStatus status;
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetSmmSN(text), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetSmmVersion(text), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetSmmName(text), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetChassisPowerConsumption(power), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetChassisPowerCap(cap), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetNodePowerConsumption(1, power), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetPSUFanSpeed(fans), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetPSUStatus(psus), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.GetNodeStatus(1, node), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_EQ(inventory.SelectPSU(1), StatusCode::NoUsableResult);
  EXPECT_EQ(inventory.GetSMMStatus(status), StatusCode::NoUsableResult);
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
  platform.onRelease = [&] { atRelease = AllocationsSoFar(); };
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
  platform.smmTypeException = std::make_exception_ptr(std::runtime_error("no type"));
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
