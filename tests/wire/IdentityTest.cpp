#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/SMMInfo.h"
#include "simulator/EnclosureKind.h"
#include "tests/support/Ipv6Test.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {
namespace {

using Simulator::EnclosureKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

struct EnclosureCase {
  const char* name;
  Texts options;
  EnclosureKind kind;
  SMMIype generation;
  std::int32_t platformId;
  std::int32_t psuSlotCount;
  unsigned long nodeCount;
};

std::ostream& operator<<(std::ostream& stream, const EnclosureCase& row) {
  return stream << row.name;
}

const std::vector<EnclosureCase>& Enclosures() {
  static const std::vector<EnclosureCase> enclosures = {
      {"FirstGeneration",
       {"--generation", "1"},
       EnclosureKind::FirstGeneration,
       SMM_FIRST_GENERATION,
       254,
       2,
       4},
      {"SecondGeneration253",
       {"--generation", "2", "--platform", "253"},
       EnclosureKind::SecondGeneration253,
       SMM_SECOND_GENERATION,
       253,
       9,
       12},
      {"SecondGeneration254",
       {"--generation", "2", "--platform", "254"},
       EnclosureKind::SecondGeneration254,
       SMM_SECOND_GENERATION,
       254,
       2,
       4},
  };
  return enclosures;
}

class EveryEnclosure : public WireTest, public ::testing::WithParamInterface<EnclosureCase> {
 protected:
  SimulatedSmm simulator{GetParam().options};
};

TEST_P(EveryEnclosure, GivesMachineTypeAndSerialNumberOfItsModel) {
  const Simulator::EnclosureState model = Simulator::MakeEnclosure(GetParam().kind);
  SMMInventory inventory(SettingsOf(simulator));
  std::string machineType;
  std::string serialNumber;
  EXPECT_EQ(inventory.GetSmmMT(machineType), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmSN(serialNumber), StatusCode::Success);
  EXPECT_EQ(machineType, model.machineType);
  EXPECT_EQ(serialNumber, model.serialNumber);
  EXPECT_THAT(lines, IsEmpty());
}

TEST_P(EveryEnclosure, IsDetectedWithinSixAttempts) {
  SMMInventory inventory(SettingsOf(simulator));
  EXPECT_THAT(pauses, ElementsAre(3, 3, 3, 3, 3, 3));
  EXPECT_EQ(inventory.GetNodeNub(), GetParam().nodeCount);
}

TEST_P(EveryEnclosure, ReportsItsStatus) {
  SMMInventory inventory(SettingsOf(simulator));
  SMMStatus status;
  EXPECT_EQ(inventory.GetSMMStatus(status), StatusCode::Success);
  EXPECT_EQ(status.platformId, GetParam().platformId);
  EXPECT_EQ(status.psuSlotCount, GetParam().psuSlotCount);
}

TEST_P(EveryEnclosure, GenerationIsTold) {
  SMMIype generation{};
  EXPECT_EQ(SMMInfo(SettingsOf(simulator)).GetSmmType(generation), 0);
  EXPECT_EQ(generation, GetParam().generation);
}

INSTANTIATE_TEST_SUITE_P(Wire, EveryEnclosure, ::testing::ValuesIn(Enclosures()),
                         [](const auto& row) { return std::string(row.param.name); });

using Identity = WireTest;

TEST_F(Identity, RefusedRequestReturns3WithItsCompletionCodeInTheLog) {
  const SimulatedSmm simulator(
      {"--generation", "1"},
      R"({"overrides": [{"command": "0xB0", "data": "05 00", "completionCode": "0xC1"}]})");
  SMMInventory inventory(SettingsOf(simulator));
  std::string machineType = "as passed";
  EXPECT_EQ(inventory.GetSmmMT(machineType), StatusCode::UnusableAnswer);
  EXPECT_EQ(machineType, "as passed");
  EXPECT_EQ(LogText(), "Get smm mt failed with error code:193\n");
}

TEST_F(Identity, SecondGenerationAnswerWithoutItsLeadingBytesRaisesBadAlloc) {
  const SimulatedSmm simulator(
      {"--generation", "2", "--platform", "254"},
      R"({"overrides": [{"command": "0xB0", "data": "05 01", "response": "4A"}]})");
  SMMInventory inventory(SettingsOf(simulator));
  std::string serialNumber = "as passed";
  EXPECT_THROW(inventory.GetSmmSN(serialNumber), std::bad_alloc);
  EXPECT_EQ(serialNumber, "as passed");
}

TEST_F(Identity, SilenceToOneRequestIsAFailedQueryAndNoMore) {
  const SimulatedSmm simulator(
      {"--generation", "1"},
      R"({"overrides": [{"command": "0xB0", "data": "05 00", "silent": true}]})");
  SMMInventory inventory(SettingsOf(simulator));
  std::string text;
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::UnusableAnswer);
  EXPECT_EQ(lines.back().text, "Get smm mt failed with error code:255");
  EXPECT_EQ(inventory.GetSmmSN(text), StatusCode::Success);
}

using IdentityOverIpv6 = Ipv6Test<WireTest>;

TEST_F(IdentityOverIpv6, EnclosureIsRead) {
  const SimulatedSmm simulator({"--generation", "1", "--address", "::1"});
  SMMInventory inventory(SettingsOf(simulator));
  std::string text;
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text.size(), 4U);
}

TEST_F(Identity, EnclosureIsReadByHostName) {
  const SimulatedSmm simulator({"--generation", "1"});
  TavrinConnection::ConnectionInfo settings = SettingsOf(simulator);
  settings.address = "localhost";
  SMMInventory inventory(settings);
  std::string text;
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
}

}  // namespace
}  // namespace Tavrin
