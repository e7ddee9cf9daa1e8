#include "simulator/Scenario.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "simulator/EnclosureKind.h"
#include "simulator/ScenarioValue.h"

namespace Tavrin::Simulator {
namespace {

Scenario ParseFor(EnclosureKind kind, const std::string& text) {
  return ParseScenario(text, "faults.json", MakeEnclosure(kind));
}

/// The overrides that the text holds.
std::vector<Override> Parse(const std::string& text) {
  return ParseFor(EnclosureKind::FirstGeneration, text).overrides;
}

std::string Complaint(const std::string& text) {
  try {
    Parse(text);
  } catch (const ScenarioError& error) {
    return error.what();
  }
  return "no complaint";
}

TEST(ScenarioText, EmptyListGivesNoOverrides) {
  EXPECT_TRUE(Parse(R"({"overrides": []})").empty());
}

TEST(ScenarioText, EverySettingOfAnAnswerIsRead) {
  const std::vector<Override> scenario = Parse(
      R"({"overrides": [{"netFn": "0x06", "command": "0x52", "data": "05 Fa", "times": 3,
                         "completionCode": "0xC1", "response": "fd 01", "delayMs": 200}]})");
  ASSERT_EQ(scenario.size(), 1U);
  EXPECT_EQ(scenario[0].netFn, 0x06);
  EXPECT_EQ(scenario[0].command, 0x52);
  EXPECT_EQ(scenario[0].requestData, (Bytes{0x05, 0xFA}));
  EXPECT_EQ(scenario[0].times, 3U);
  EXPECT_EQ(scenario[0].answer.value().completionCode, 0xC1);
  EXPECT_EQ(scenario[0].answer.value().data, (Bytes{0xFD, 0x01}));
  EXPECT_EQ(scenario[0].delay.count(), 200);
  EXPECT_FALSE(scenario[0].silent);
}

TEST(ScenarioText, LeftOutSettingsHaveTheirDefaults) {
  const std::vector<Override> scenario =
      Parse(R"({"overrides": [{"command": "0x9", "response": ""}]})");
  ASSERT_EQ(scenario.size(), 1U);
  EXPECT_EQ(scenario[0].netFn, 0x32);
  EXPECT_EQ(scenario[0].command, 0x09);
  EXPECT_EQ(scenario[0].requestData, std::nullopt);
  EXPECT_EQ(scenario[0].times, std::nullopt);
  EXPECT_EQ(scenario[0].answer.value().completionCode, 0x00);
  EXPECT_EQ(scenario[0].answer.value().data, Bytes{});
  EXPECT_EQ(scenario[0].delay.count(), 0);
}

TEST(ScenarioText, SilenceIsRead) {
  EXPECT_TRUE(Parse(R"({"overrides": [{"command": "0xA8", "silent": true}]})").at(0).silent);
}

/// So many bytes as a scenario has them.
std::string Ff(std::size_t count) {
  std::string bytes = "FF";
  for (; count > 1; --count) {
    bytes += " FF";
  }
  return bytes;
}

TEST(ScenarioText, ResponseOfTheGreatestLengthIsRead) {
  const std::string bytes = Ff(200);
  const std::vector<Override> scenario =
      Parse(R"({"overrides": [{"command": "0x01", "response": ")" + bytes + R"("}]})");
  EXPECT_EQ(scenario.at(0).answer.value().data.size(), 200U);
  EXPECT_EQ(Complaint(R"({"overrides": [{"command": "0x01", "response": ")" + bytes + R"( 22"}]})"),
            "faults.json: overrides[0].response is 201 bytes long; expected at most 200");
}

struct BadCase {
  std::string name;
  std::string text;
  std::string complaint;
};

/// A scenario with one entry.
std::string Entry(const std::string& settings) {
  return R"({"overrides": [{"command": "0xA8", )" + settings + "}]}";
}

const std::string kByte = R"(; expected a byte as text, "0x00" to "0xFF")";
const std::string kBytes =
    "; expected bytes as text, each of two hexadecimal digits, with one blank between them";
const std::string kKeys =
    "; expected one of netFn, command, data, times, completionCode, response, delayMs, silent";

std::string Objects(std::size_t depth) {
  return depth == 1 ? "{}" : R"({"a":)" + Objects(depth - 1) + "}";
}

std::string Nested(std::size_t depth) {
  return R"({"overrides": )" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
}

class BadScenario : public testing::TestWithParam<BadCase> {};

TEST_P(BadScenario, GetsOneSentenceWithPlaceValueAndExpectation) {
  EXPECT_EQ(Complaint(GetParam().text), "faults.json: " + GetParam().complaint);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, BadScenario,
    testing::Values(
        BadCase{"Empty", "", "line 1, column 1 is where the text stops being valid; expected JSON"},
        BadCase{"CutOff", "{\n  \"overrides\":",
                "line 2, column 15 is where the text stops being valid; expected JSON"},
        BadCase{"SpoilsALineThatIsNotTheLast", "{\n  x\n}\n",
                "line 2, column 3 is where the text stops being valid; expected JSON"},
        BadCase{"List", "[]",
                "the document is []; expected an object with the keys enclosure, overrides"},
        BadCase{"UnknownKey", R"({"override": []})",
                R"(the document has the key "override"; expected one of enclosure, overrides)"},
        BadCase{"Nothing", "{}",
                "the document is without an effect; expected at least one of enclosure, overrides"},
        BadCase{"OverridesNoList", R"({"overrides": 5})",
                "overrides is 5; expected a list of objects"},
        BadCase{"RepeatedKey", R"({"overrides": [], "overrides": []})",
                R"(the key "overrides" stands twice in one object; expected it once)"},
        BadCase{"DeepestNesting", Nested(16),
                "overrides[0] is [[[[[[[[[[[[[[]]]]]]]]]]]]]]; expected an object with the keys "
                "netFn, command, data, times, completionCode, response, delayMs, silent"},
        BadCase{"ValueInTheDeepestNesting", R"({"overrides": [[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]})",
                "overrides[0] is [[[[[[[[[[[[[[1]]]]]]]]]]]]]]; expected an object with the keys "
                "netFn, command, data, times, completionCode, response, delayMs, silent"},
        BadCase{"NestedTooDeep", Nested(17),
                "line 1, column 30 opens level 17 of nesting; expected at most 16 levels"},
        BadCase{"NestedWithoutMeasure", Nested(20000),
                "line 1, column 30 opens level 17 of nesting; expected at most 16 levels"},
        BadCase{"ObjectsNestedTooDeep", R"({"a":{"a":{"a":{"a":{"a":{"a":{"a":{"a":)" + Nested(9),
                "line 1, column 62 opens level 17 of nesting; expected at most 16 levels"},
        BadCase{"ObjectsAloneNestedTooDeep", Objects(17),
                "line 1, column 81 opens level 17 of nesting; expected at most 16 levels"},
        BadCase{"NumberOutOfRange", "{\n  \"overrides\": 1e999}",
                "line 2, column 20 ends a number that is out of range; expected one that fits into "
                "a double"},
        BadCase{"NumberOutOfRangeWithA0AtItsEnd", "{\n  \"overrides\": 1e1000}",
                "line 2, column 21 ends a number that is out of range; expected one that fits into "
                "a double"},
        BadCase{
            "NumberOutOfRangeAtTheEnd", "-1e999",
            "line 1, column 6 ends a number that is out of range; expected one that fits into a "
            "double"},
        BadCase{"EntryNoObject", R"({"overrides": [true]})",
                "overrides[0] is true; expected an object with the keys netFn, command, data, "
                "times, completionCode, response, delayMs, silent"},
        BadCase{"NoCommand", R"({"overrides": [{"silent": true}]})",
                "overrides[0].command is missing" + kByte},
        BadCase{"SecondEntry",
                R"({"overrides": [{"command": "0x01", "silent": true}, {"command": 1}]})",
                "overrides[1].command is 1" + kByte}),
    [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Settings, BadScenario,
    testing::Values(
        BadCase{"UnknownKeyOfEntry", Entry(R"("delay": 5)"),
                R"(overrides[0] has the key "delay")" + kKeys},
        BadCase{"CompletionCodeAsNumber", Entry(R"("completionCode": 193)"),
                "overrides[0].completionCode is 193" + kByte},
        BadCase{"CompletionCodeTooLarge", Entry(R"("completionCode": "0x100")"),
                R"(overrides[0].completionCode is "0x100")" + kByte},
        BadCase{"CompletionCodeWithoutPrefix", Entry(R"("completionCode": "C1")"),
                R"(overrides[0].completionCode is "C1")" + kByte},
        BadCase{"CompletionCodeWithoutDigits", Entry(R"("completionCode": "0x")"),
                R"(overrides[0].completionCode is "0x")" + kByte},
        BadCase{"CompletionCodeNoDigit", Entry(R"("completionCode": "0x1g")"),
                R"(overrides[0].completionCode is "0x1g")" + kByte},
        BadCase{"ResponseOtherSeparator", Entry(R"("response": "01x02")"),
                R"(overrides[0].response is "01x02")" + kBytes},
        BadCase{"FirstOfTwoInTheOrderOfTheKeys", Entry(R"("completionCode": 1, "times": 0)"),
                "overrides[0].times is 0; expected a whole number from 1 to 1000000"},
        BadCase{"CommandBeforeItsData", Entry(R"("netFn": "0x06", "data": "x", "silent": true)"),
                R"(overrides[0] is for netFn "0x06" and command "0xA8"; expected netFn "0x32", )"
                R"(or netFn "0x06" with command "0x52")"},
        BadCase{"ResponseNoText", Entry(R"("response": [1])"),
                "overrides[0].response is [1]" + kBytes},
        BadCase{"ResponseOneDigit", Entry(R"("response": "1")"),
                R"(overrides[0].response is "1")" + kBytes},
        BadCase{"ResponseTwoBlanks", Entry(R"("response": "01  02")"),
                R"(overrides[0].response is "01  02")" + kBytes},
        BadCase{"ResponseBlankAtEnd", Entry(R"("response": "01 ")"),
                R"(overrides[0].response is "01 ")" + kBytes},
        BadCase{"ResponseNoDigit", Entry(R"("response": "0g")"),
                R"(overrides[0].response is "0g")" + kBytes},
        BadCase{"DataWithPrefix", Entry(R"("data": "0x05", "silent": true)"),
                R"(overrides[0].data is "0x05")" + kBytes},
        BadCase{"ControlBytesAreShownEscaped", Entry(R"("data": "\u001b[2J")"),
                R"(overrides[0].data is "\u001b[2J")" + kBytes},
        BadCase{"TimesZero", Entry(R"("times": 0, "silent": true)"),
                "overrides[0].times is 0; expected a whole number from 1 to 1000000"},
        BadCase{"TimesNegative", Entry(R"("times": -1, "silent": true)"),
                "overrides[0].times is -1; expected a whole number from 1 to 1000000"},
        BadCase{"DelayBroken", Entry(R"("delayMs": 0.5)"),
                "overrides[0].delayMs is 0.5; expected a whole number from 1 to 60000"},
        BadCase{"DelayTooLong", Entry(R"("delayMs": 60001)"),
                "overrides[0].delayMs is 60001; expected a whole number from 1 to 60000"},
        BadCase{"SilentAsNumber", Entry(R"("silent": 1)"),
                "overrides[0].silent is 1; expected true or false"},
        BadCase{
            "ValueThatIsShownWhole", Entry(R"("silent": ")" + std::string(58, 'a') + R"(")"),
            R"(overrides[0].silent is ")" + std::string(58, 'a') + R"("; expected true or false)"},
        BadCase{
            "ValueThatIsShownCut", Entry(R"("silent": ")" + std::string(59, 'a') + R"(")"),
            R"(overrides[0].silent is ")" + std::string(59, 'a') + "...; expected true or false"},
        BadCase{"SilentWithResponse", Entry(R"("silent": true, "response": "")"),
                "overrides[0] is silent and has an answer or a delay; expected silent alone, or "
                "completionCode, response and delayMs without it"},
        BadCase{"NoEffect", Entry(R"("times": 1)"),
                "overrides[0] is without an effect; expected at least one of completionCode, "
                "response, delayMs, silent"},
        BadCase{"CommandOfThePowerSuppliesUnderAnotherNetworkFunction",
                R"({"overrides": [{"netFn": "0x04", "command": "0x52", "silent": true}]})",
                R"(overrides[0] is for netFn "0x04" and command "0x52"; expected netFn "0x32", )"
                R"(or netFn "0x06" with command "0x52")"},
        BadCase{"CommandOfTheSession", Entry(R"("netFn": "0x06", "silent": true)"),
                R"(overrides[0] is for netFn "0x06" and command "0xA8"; expected netFn "0x32", )"
                R"(or netFn "0x06" with command "0x52")"}),
    [](const auto& instance) { return instance.param.name; });

/// A scenario that changes the enclosure.
std::string Changes(const std::string& members) { return R"({"enclosure": {)" + members + "}}"; }

std::string FirstsComplaint(const std::string& members) { return Complaint(Changes(members)); }

EnclosureState Changed(EnclosureKind kind, const std::string& members) {
  return ParseFor(kind, Changes(members)).enclosure;
}

TEST(EnclosureChange, TextsAndRevisionAreSet) {
  const EnclosureState enclosure =
      Changed(EnclosureKind::FirstGeneration,
              R"("machineType": " BCDEFG~", "serialNumber": "123456789012", "name": "",
                 "buildName": "BUILD6", "majorRevision": 252, "minorRevision": 255)");
  EXPECT_EQ(enclosure.machineType, " BCDEFG~");
  EXPECT_EQ(enclosure.serialNumber, "123456789012");
  EXPECT_EQ(enclosure.name, "");
  EXPECT_EQ(enclosure.buildName, "BUILD6");
  EXPECT_EQ(enclosure.majorRevision, 252);
  EXPECT_EQ(enclosure.minorRevision, 255);
}

TEST(EnclosureChange, PowerAndCapsAreSetAndTheRestStays) {
  const EnclosureState before = MakeEnclosure(EnclosureKind::SecondGeneration254);
  const EnclosureState enclosure = Changed(EnclosureKind::SecondGeneration254,
                                           R"("power": {"min": 0, "max": 65535},
                 "caps": {"min": 1, "max": 2, "protective": 3, "user": 4, "thermal": 5})");
  EXPECT_EQ(enclosure.power.minimum, 0);
  EXPECT_EQ(enclosure.power.average, before.power.average);
  EXPECT_EQ(enclosure.power.maximum, 65535);
  EXPECT_EQ(enclosure.caps.minimum, 1);
  EXPECT_EQ(enclosure.caps.maximum, 2);
  EXPECT_EQ(enclosure.caps.protective, 3);
  EXPECT_EQ(enclosure.caps.user, 4);
  EXPECT_EQ(enclosure.caps.thermal, 5);
  EXPECT_EQ(enclosure.name, before.name);
}

TEST(EnclosureChange, EveryReadingOfANodeIsSet) {
  const EnclosureState enclosure =
      Changed(EnclosureKind::SecondGeneration253,
              R"("nodes": {"12": {"power": {"min": 1, "avg": 2, "max": 3}, "powerState": "0x60",
                                  "width": 4, "height": 5, "permission": 6}})");
  const Node& node = enclosure.nodes.at(11);
  EXPECT_EQ(node.power.minimum, 1);
  EXPECT_EQ(node.power.average, 2);
  EXPECT_EQ(node.power.maximum, 3);
  EXPECT_EQ(node.powerState, 0x60);
  EXPECT_EQ(node.width, 4);
  EXPECT_EQ(node.height, 5);
  EXPECT_EQ(node.permission, 6);
  EXPECT_EQ(enclosure.nodes.at(10).powerState, PowerState::kOn);
}

TEST(EnclosureChange, EveryReadingOfAPsuIsSet) {
  const EnclosureState enclosure =
      Changed(EnclosureKind::SecondGeneration253,
              R"("psus": {"9": {"fanA": {"speed": 1, "pat": 2}, "fanB": {"speed": 3, "pat": 4},
                                "fanStatus": "abnormal", "version": {"major": 5, "minor": 6},
                                "manufacturer": "07 08 09 0A",
                                "position": {"first": 11, "second": 12}, "powerGood": false,
                                "earlyPowerOffWarning": true, "throttle": true}})");
  const Psu& psu = enclosure.psus.at(8);
  EXPECT_EQ(psu.fanA.speed, 1);
  EXPECT_EQ(psu.fanA.pat, 2);
  EXPECT_EQ(psu.fanB.speed, 3);
  EXPECT_EQ(psu.fanB.pat, 4);
  EXPECT_EQ(psu.fanStatus, FanStatus::kAbnormal);
  EXPECT_EQ(psu.version.major, 5);
  EXPECT_EQ(psu.version.minor, 6);
  EXPECT_EQ(psu.manufacturer, (std::array<std::uint8_t, 4>{7, 8, 9, 10}));
  EXPECT_EQ(psu.position.first, 11);
  EXPECT_EQ(psu.position.second, 12);
  EXPECT_TRUE(psu.present);
  EXPECT_FALSE(psu.powerGood);
  EXPECT_TRUE(psu.earlyPowerOffWarning);
  EXPECT_TRUE(psu.throttle);
}

TEST(EnclosureChange, PulledPsuHasNoReadingsAndNoGoodPower) {
  const Psu psu =
      Changed(EnclosureKind::SecondGeneration254, R"("psus": {"2": {"present": false}})")
          .psus.at(1);
  EXPECT_FALSE(psu.present);
  EXPECT_FALSE(psu.powerGood);
  EXPECT_EQ(psu.fanStatus, FanStatus::kNotPresent);
  EXPECT_EQ(psu.fanA.speed, 0);
  EXPECT_EQ(psu.fanA.pat, 0);
  EXPECT_EQ(psu.fanB.speed, 0);
  EXPECT_EQ(psu.fanB.pat, 0);
}

TEST(EnclosureChange, PulledPsuTakesReadingsThatStandBesideItsAbsence) {
  const Psu psu =
      Changed(EnclosureKind::FirstGeneration,
              R"("psus": {"1": {"fanA": {"speed": 7}, "powerGood": true, "present": false}})")
          .psus.at(0);
  EXPECT_EQ(psu.fanA.speed, 7);
  EXPECT_EQ(psu.fanA.pat, 0);
  EXPECT_TRUE(psu.powerGood);
}

TEST(EnclosureChange, NodeThatIsOffTakesNoPowerUnlessReadingsAreGiven) {
  const EnclosureState enclosure = Changed(
      EnclosureKind::FirstGeneration,
      R"("nodes": {"1": {"powerState": "off"}, "2": {"power": {"avg": 8}, "powerState": "off"}})");
  EXPECT_EQ(enclosure.nodes.at(0).powerState, PowerState::kOff);
  EXPECT_EQ(enclosure.nodes.at(0).power.minimum, 0);
  EXPECT_EQ(enclosure.nodes.at(0).power.average, 0);
  EXPECT_EQ(enclosure.nodes.at(0).power.maximum, 0);
  EXPECT_EQ(enclosure.nodes.at(1).power.minimum, 0);
  EXPECT_EQ(enclosure.nodes.at(1).power.average, 8);
}

TEST(EnclosureChange, NumberedElementWinsOverAll) {
  const EnclosureState enclosure =
      Changed(EnclosureKind::FirstGeneration,
              R"("nodes": {"2": {"width": 2}, "all": {"width": 9, "height": 7}})");
  EXPECT_EQ(enclosure.nodes.at(0).width, 9);
  EXPECT_EQ(enclosure.nodes.at(1).width, 2);
  EXPECT_EQ(enclosure.nodes.at(1).height, 7);
  EXPECT_EQ(enclosure.nodes.at(3).width, 9);
}

struct CodeCase {
  std::string name;
  std::string members;
  std::uint8_t powerState;
  std::uint8_t fanStatus;
};

class CodeWord : public testing::TestWithParam<CodeCase> {};

TEST_P(CodeWord, StandsForItsCode) {
  const EnclosureState enclosure = Changed(EnclosureKind::FirstGeneration, GetParam().members);
  EXPECT_EQ(enclosure.nodes.front().powerState, GetParam().powerState);
  EXPECT_EQ(enclosure.psus.front().fanStatus, GetParam().fanStatus);
}

std::string Codes(const std::string& powerState, const std::string& fanStatus) {
  return R"("nodes": {"1": {"powerState": ")" + powerState +
         R"("}}, "psus": {"1": {"fanStatus": ")" + fanStatus + R"("}})";
}

INSTANTIATE_TEST_SUITE_P(
    All, CodeWord,
    testing::Values(CodeCase{"OnAndNormal", Codes("on", "normal"), 0x80, 2},
                    CodeCase{"OffAndAbnormal", Codes("off", "abnormal"), 0x00, 1},
                    CodeCase{"FaultAndNotPresent", Codes("fault", "not-present"), 0x40, 0},
                    CodeCase{"NoPermissionAndByte", Codes("no-permission", "0xfe"), 0x20, 0xFE}),
    [](const auto& instance) { return instance.param.name; });

class BadChange : public testing::TestWithParam<BadCase> {};

TEST_P(BadChange, GetsOneSentenceWithPlaceValueAndExpectation) {
  EXPECT_EQ(FirstsComplaint(GetParam().text), "faults.json: " + GetParam().complaint);
}

INSTANTIATE_TEST_SUITE_P(
    All, BadChange,
    testing::Values(
        BadCase{"UnknownPower", R"("power": {"mean": 1})",
                R"(enclosure.power has the key "mean"; expected one of min, avg, max)"},
        BadCase{"UnknownCap", R"("caps": {"soft": 1})",
                R"(enclosure.caps has the key "soft"; expected one of min, max, protective, user, )"
                "thermal"},
        BadCase{"UnknownReadingOfANode", R"("nodes": {"4": {"depth": 1}})",
                R"(enclosure.nodes.4 has the key "depth"; expected one of powerState, power, )"
                "width, height, permission"},
        BadCase{"UnknownReadingOfAPsu", R"("psus": {"all": {"fanC": 1}})",
                R"(enclosure.psus.all has the key "fanC"; expected one of present, powerGood, )"
                "earlyPowerOffWarning, throttle, fanStatus, fanA, fanB, version, manufacturer, "
                "position"},
        BadCase{"UnknownReadingOfAFan", R"("psus": {"1": {"fanA": {"rpm": 1}}})",
                R"(enclosure.psus.1.fanA has the key "rpm"; expected one of speed, pat)"},
        BadCase{"UnknownPartOfAVersion", R"("psus": {"1": {"version": {"patch": 1}}})",
                R"(enclosure.psus.1.version has the key "patch"; expected one of major, minor)"},
        BadCase{"UnknownPartOfAPosition", R"("psus": {"1": {"position": {"third": 1}}})",
                R"(enclosure.psus.1.position has the key "third"; expected one of first, second)"},
        BadCase{"UnknownFanStatus", R"("psus": {"1": {"fanStatus": "loud"}})",
                R"(enclosure.psus.1.fanStatus is "loud"; expected one of not-present, abnormal, )"
                R"(normal, or a byte as text, "0x00" to "0xFF")"},
        BadCase{"NodeOfAnotherPlatform", R"("nodes": {"5": {}})",
                R"(enclosure.nodes has the key "5"; expected one of all, 1, 2, 3, 4)"},
        BadCase{"PsuZero", R"("psus": {"0": {}})",
                R"(enclosure.psus has the key "0"; expected one of all, 1, 2)"},
        BadCase{"NodesAsList", R"("nodes": [])",
                "enclosure.nodes is []; expected an object with the keys all, 1, 2, 3, 4"},
        BadCase{"WordTooLarge", R"("nodes": {"1": {"power": {"min": 65536}}})",
                "enclosure.nodes.1.power.min is 65536; expected a whole number from 0 to 65535"},
        BadCase{"WordNegative", R"("caps": {"user": -1})",
                "enclosure.caps.user is -1; expected a whole number from 0 to 65535"},
        BadCase{"WordAsText", R"("power": {"avg": "10"})",
                R"(enclosure.power.avg is "10"; expected a whole number from 0 to 65535)"},
        BadCase{"ByteTooLarge", R"("psus": {"all": {"fanB": {"pat": 256}}})",
                "enclosure.psus.all.fanB.pat is 256; expected a whole number from 0 to 255"},
        BadCase{"RevisionOfTheOtherGeneration", R"("majorRevision": 253)",
                "enclosure.majorRevision is 253; expected a whole number from 0 to 252"},
        BadCase{"TextTooLong", R"("buildName": "1234567")",
                R"(enclosure.buildName is "1234567"; expected a text of at most 6 printable ASCII )"
                "characters"},
        BadCase{"TextNotAscii", R"("name": "Gehäuse")",
                R"(enclosure.name is "Geh\u00e4use"; expected a text of at most 24 printable )"
                "ASCII characters"},
        BadCase{"TextWithDelete", R"("name": "a\u007f")",
                R"(enclosure.name is "a\u007f"; expected a text of at most 24 printable ASCII )"
                "characters"},
        BadCase{"TextWithControlByte", R"("name": "a\u001f")",
                R"(enclosure.name is "a\u001f"; expected a text of at most 24 printable ASCII )"
                "characters"},
        BadCase{"TextNoText", R"("machineType": 1234)",
                "enclosure.machineType is 1234; expected a text of at most 8 printable ASCII "
                "characters"},
        BadCase{"UnknownPowerState", R"("nodes": {"1": {"powerState": "dim"}})",
                R"(enclosure.nodes.1.powerState is "dim"; expected one of on, off, fault, )"
                R"(no-permission, or a byte as text, "0x00" to "0xFF")"},
        BadCase{"PresentAsNumber", R"("psus": {"1": {"present": 0}})",
                "enclosure.psus.1.present is 0; expected true or false"},
        BadCase{"ManufacturerTooShort", R"("psus": {"1": {"manufacturer": "41 42 43"}})",
                "enclosure.psus.1.manufacturer is 3 bytes long; expected 4"},
        BadCase{"ManufacturerFarTooLong",
                R"("psus": {"1": {"manufacturer": ")" + Ff(100000) + R"("}})",
                "enclosure.psus.1.manufacturer is 100000 bytes long; expected 4"},
        BadCase{"ManufacturerNoBytes", R"("psus": {"1": {"manufacturer": "ABCD"}})",
                R"(enclosure.psus.1.manufacturer is "ABCD")" + kBytes}),
    [](const auto& instance) { return instance.param.name; });

TEST(EnclosureChange, SecondGenerationTakesEveryMajorRevision) {
  EXPECT_EQ(Changed(EnclosureKind::SecondGeneration254, R"("majorRevision": 255)").majorRevision,
            255);
}

}  // namespace
}  // namespace Tavrin::Simulator
