#include "simulator/Scenario.h"

#include <gtest/gtest.h>

namespace Tavrin::Simulator {
namespace {

Scenario Parse(const std::string& text) { return ParseScenario(text, "faults.json"); }

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
  const Scenario scenario = Parse(
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
  const Scenario scenario = Parse(R"({"overrides": [{"command": "0x9", "response": ""}]})");
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

TEST(ScenarioText, ResponseOfTheGreatestLengthIsRead) {
  std::string bytes = "00";
  for (int count = 1; count < 200; ++count) {
    bytes += " 11";
  }
  const Scenario scenario =
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
        BadCase{"List", "[]", "the document is []; expected an object with the keys overrides"},
        BadCase{"UnknownKey", R"({"override": []})",
                R"(the document has the key "override"; expected one of overrides)"},
        BadCase{"NoOverrides", "{}", "overrides is missing; expected a list of objects"},
        BadCase{"OverridesNoList", R"({"overrides": 5})",
                "overrides is 5; expected a list of objects"},
        BadCase{"RepeatedKey", R"({"overrides": [], "overrides": []})",
                R"(the key "overrides" stands twice in one object; expected it once)"},
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
        BadCase{"SilentWithResponse", Entry(R"("silent": true, "response": "")"),
                "overrides[0] is silent and has an answer or a delay; expected silent alone, or "
                "completionCode, response and delayMs without it"},
        BadCase{"NoEffect", Entry(R"("times": 1)"),
                "overrides[0] is without an effect; expected at least one of completionCode, "
                "response, delayMs, silent"},
        BadCase{"CommandOfTheSession", Entry(R"("netFn": "0x06", "silent": true)"),
                R"(overrides[0] is for netFn "0x06" and command "0xA8"; expected netFn "0x32", )"
                R"(or netFn "0x06" with command "0x52")"}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace Tavrin::Simulator
