#include "reading/Decode.h"

#include <gmock/gmock.h>

namespace Tavrin {
namespace {

using testing::Each;
using testing::SizeIs;

TEST(Decode, NumberKeepsTheTextOfTheLibrary) {
  const PowerReadings power = DecodePower({"0", "65535", "N/A"});
  EXPECT_EQ(power.minimum.value, 0);
  EXPECT_EQ(power.minimum.text, "0");
  EXPECT_EQ(power.minimum.absence, Absence::None);
  EXPECT_EQ(power.average.value, 65535);
  EXPECT_EQ(power.maximum.value, std::nullopt);
  EXPECT_EQ(power.maximum.text, "N/A");
  EXPECT_EQ(power.maximum.absence, Absence::NotReported);
}

TEST(Decode, TextThatIsNoNumberIsNotReported) {
  for (const char* const text : {"", "12x", "x12", " 1", "99999999999999999999"}) {
    const Number number = DecodePower({text, "", ""}).minimum;
    EXPECT_EQ(number.value, std::nullopt) << text;
    EXPECT_EQ(number.absence, Absence::NotReported) << text;
    EXPECT_EQ(number.text, text);
  }
}

TEST(Decode, NumbersAndGenerationsOfOursHaveNoText) {
  EXPECT_EQ(NumberOf(7).value, 7);
  EXPECT_EQ(NumberOf(7).text, "");
  EXPECT_EQ(GenerationOf(SMM_SECOND_GENERATION).value, SMM_SECOND_GENERATION);
  EXPECT_EQ(GenerationOf(SMM_SECOND_GENERATION).text, "");
}

TEST(Decode, CapsKeepTheirPlaces) {
  const PowerCaps caps = DecodeCaps({"1", "2", "3", "4", "5"});
  EXPECT_EQ(caps.rangeMinimum.value, 1);
  EXPECT_EQ(caps.rangeMaximum.value, 2);
  EXPECT_EQ(caps.protectiveCap.value, 3);
  EXPECT_EQ(caps.userCap.value, 4);
  EXPECT_EQ(caps.thermalCap.value, 5);
}

TEST(Decode, TextThatIsNoStateIsNotReported) {
  const NodeState node = DecodeNode({"Power", "", "", 0});
  EXPECT_EQ(node.powerState.value, std::nullopt);
  EXPECT_EQ(node.powerState.text, "Power");
  EXPECT_EQ(node.powerState.absence, Absence::NotReported);
}

struct PowerStateRow {
  std::string text;
  NodePowerState state;
};

TEST(Decode, PowerStateHasAValueForEachTextOfTheLibrary) {
  const std::vector<PowerStateRow> table = {{"Power OFF", NodePowerState::Off},
                                            {"No Permission", NodePowerState::NoPermission},
                                            {"Power Fault", NodePowerState::PowerFault},
                                            {"Power ON", NodePowerState::On},
                                            {"Fault", NodePowerState::Fault}};
  for (const PowerStateRow& row : table) {
    const NodeState node = DecodeNode({row.text, "Half", "N/A", 32});
    EXPECT_EQ(node.powerState.value, row.state) << row.text;
    EXPECT_EQ(node.powerState.text, row.text);
  }
}

TEST(Decode, WidthIsAWordOrACode) {
  EXPECT_EQ(DecodeNode({"", "Half", "", 0}).width.value, NodeWidth::Half);
  EXPECT_EQ(DecodeNode({"", "Full", "", 0}).width.value, NodeWidth::Full);
  const Value<NodeWidth> other = DecodeNode({"", "7", "", 0}).width;
  EXPECT_EQ(other.value, NodeWidth::Other);
  EXPECT_EQ(other.text, "7");
  const Value<NodeWidth> none = DecodeNode({"", "N/A", "", 0}).width;
  EXPECT_EQ(none.value, std::nullopt);
  EXPECT_EQ(none.absence, Absence::NotReported);
}

TEST(Decode, HeightAndPermissionOfANodeAreNumbers) {
  const NodeState node = DecodeNode({"Power ON", "Half", "2", 255});
  EXPECT_EQ(node.height.value, 2);
  EXPECT_EQ(node.permission.value, 255);
  EXPECT_EQ(DecodeNode({"Power ON", "Half", "N/A", 0}).height.absence, Absence::NotReported);
}

struct FanStateRow {
  std::string text;
  PsuFanState state;
};

TEST(Decode, FanStateHasAValueForEachTextOfTheLibrary) {
  const std::vector<FanStateRow> table = {{"Not Present", PsuFanState::NotPresent},
                                          {"Abnormal", PsuFanState::Abnormal},
                                          {"Normal", PsuFanState::Normal},
                                          {"Unknown", PsuFanState::Unknown}};
  for (const FanStateRow& row : table) {
    const auto fans = DecodeFans({{"PSU1", "", "", "", "", row.text}}, 1, Absence::SlotUnanswered);
    EXPECT_EQ(fans.front().status.value, row.state) << row.text;
    EXPECT_EQ(fans.front().status.text, row.text);
  }
}

TEST(Decode, SecondFanOfAFirstGenerationSmmIsNone) {
  const auto fans = DecodeFans({{"PSU1", "N/A", "20", "", "", "Normal"}}, 1, Absence::QueryFailed);
  EXPECT_EQ(fans.front().speedA.absence, Absence::NotReported);
  EXPECT_EQ(fans.front().patA.value, 20);
  EXPECT_EQ(fans.front().speedB.absence, Absence::NoSecondFan);
  EXPECT_EQ(fans.front().patB.absence, Absence::NoSecondFan);
}

TEST(Decode, SecondFanOfASecondGenerationSmmHasReadings) {
  const auto fans = DecodeFans(
      {{"PSU1", "1", "2", "N/A", "4", "Normal"}, {"PSU2", "5", "6", "7", "N/A", "Normal"}}, 2,
      Absence::QueryFailed);
  EXPECT_EQ(fans[0].speedA.value, 1);
  EXPECT_EQ(fans[0].patA.value, 2);
  EXPECT_EQ(fans[0].speedB.absence, Absence::NotReported);
  EXPECT_EQ(fans[0].patB.value, 4);
  EXPECT_EQ(fans[1].speedB.value, 7);
  EXPECT_EQ(fans[1].patB.absence, Absence::NotReported);
}

TEST(Decode, SlotsAreThoseThatTheRecordsName) {
  const auto fans = DecodeFans({{"PSU2", "10", "", "", "", ""}, {"PSU12", "20", "", "", "", ""}}, 3,
                               Absence::SlotUnanswered);
  ASSERT_THAT(fans, SizeIs(12));
  EXPECT_EQ(fans[0].slot, 1U);
  EXPECT_EQ(fans[0].name.absence, Absence::SlotUnanswered);
  EXPECT_EQ(fans[0].speedB.absence, Absence::SlotUnanswered);
  EXPECT_EQ(fans[0].status.absence, Absence::SlotUnanswered);
  EXPECT_EQ(fans[1].slot, 2U);
  EXPECT_EQ(fans[1].name.value, "PSU2");
  EXPECT_EQ(fans[1].speedA.value, 10);
  EXPECT_EQ(fans[11].speedA.value, 20);
}

TEST(Decode, RecordThatNamesNoPsuIsOfNoSlot) {
  const auto fans = DecodeFans({{"FAN1", "10", "", "", "", ""}, {"", "", "", "", "", ""}}, 1,
                               Absence::QueryFailed);
  ASSERT_THAT(fans, SizeIs(1));
  EXPECT_EQ(fans[0].name.value, std::nullopt);
}

template <typename... Values>
void ExpectUntold(const Values&... values) {
  EXPECT_THAT((std::vector<Absence>{values.absence...}), Each(Absence::SlotUnanswered));
  EXPECT_THAT((std::vector<bool>{values.value.has_value()...}), Each(false));
  EXPECT_THAT((std::vector<std::string>{values.text...}), Each(""));
}

TEST(Decode, WithoutRecordsEverySlotIsUntold) {
  const auto fans = DecodeFans({}, 2, Absence::SlotUnanswered);
  ASSERT_THAT(fans, SizeIs(2));
  EXPECT_EQ(fans[1].slot, 2U);
  ExpectUntold(fans[1].name, fans[1].speedA, fans[1].patA, fans[1].speedB, fans[1].patB,
               fans[1].status);
  const auto firmware = DecodeFirmware({}, 2, Absence::SlotUnanswered);
  ASSERT_THAT(firmware, SizeIs(2));
  EXPECT_EQ(firmware[1].slot, 2U);
  ExpectUntold(firmware[1].name, firmware[1].identifier, firmware[1].version,
               firmware[1].description);
}

TEST(Decode, UnreadFlagsOfEverySlotHaveTheirNumber) {
  const auto flags = UnreadFlags(2);
  ASSERT_THAT(flags, SizeIs(2));
  EXPECT_EQ(flags[0].slot, 1U);
  EXPECT_EQ(flags[1].slot, 2U);
  EXPECT_EQ(flags[1].present.absence, Absence::QueryFailed);
}

TEST(Decode, FirmwareKeepsEveryByte) {
  using std::string_literals::operator""s;
  const std::string identifier = "PSU\xff\0\x1b"s + "Da.01";
  const auto firmware = DecodeFirmware({{"PSU1", identifier, "1.0a", "1", "Power Supply 1"}}, 1,
                                       Absence::SlotUnanswered);
  EXPECT_EQ(firmware.front().slot, 1U);
  EXPECT_EQ(firmware.front().name.value, "PSU1");
  EXPECT_EQ(firmware.front().identifier.value, identifier);
  EXPECT_EQ(firmware.front().version.value, "1.0a");
  EXPECT_EQ(firmware.front().description.text, "Power Supply 1");
}

TEST(Decode, FlagsAreTrueWhereTheLibrarySaysSo) {
  const auto flags = DecodeFlags({{"trigger", "not trigger", "present", "not power good"},
                                  {"not trigger", "trigger", "not present", "power good"}});
  ASSERT_THAT(flags, SizeIs(2));
  EXPECT_EQ(flags[0].epow.value, true);
  EXPECT_EQ(flags[0].throttle.value, false);
  EXPECT_EQ(flags[0].present.value, true);
  EXPECT_EQ(flags[0].powerGood.value, false);
  EXPECT_EQ(flags[0].powerGood.text, "not power good");
  EXPECT_EQ(flags[1].epow.value, false);
  EXPECT_EQ(flags[1].throttle.value, true);
  EXPECT_EQ(flags[1].present.value, false);
  EXPECT_EQ(flags[1].powerGood.value, true);
  EXPECT_EQ(flags[1].slot, 2U);
}

TEST(Decode, FlagsBehindTheEighthSlotAreNotTold) {
  const auto flags = DecodeFlags(
      std::vector<PSUStatus>(9, {"not trigger", "not trigger", "not present", "not power good"}));
  ASSERT_THAT(flags, SizeIs(9));
  EXPECT_EQ(flags[7].present.value, false);
  EXPECT_EQ(flags[8].slot, 9U);
  EXPECT_EQ(flags[8].present.absence, Absence::FlagsNotTold);
  EXPECT_EQ(flags[8].present.value, std::nullopt);
  EXPECT_EQ(flags[8].present.text, "");
  EXPECT_EQ(flags[8].epow.absence, Absence::FlagsNotTold);
  EXPECT_EQ(flags[8].throttle.absence, Absence::FlagsNotTold);
  EXPECT_EQ(flags[8].powerGood.absence, Absence::FlagsNotTold);
}

}  // namespace
}  // namespace Tavrin
