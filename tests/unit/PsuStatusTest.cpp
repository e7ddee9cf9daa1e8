#include "module/smm/smm_inventory/impl/PsuStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::ExchangeLines;
using Double::Line;
using Double::OfSmmType;
using StatusCode::Success;
using StatusCode::UnusableAnswer;

const std::string kHeading = "The gotted PSU status is :\n";

// The words of each flag as a digit, PSU 1 first; '-' for a record that was not filled.
char Digit(const std::string& word) {
  static const std::map<std::string, char> digits = {
      {"trigger", '1'},    {"not trigger", '0'},    {"present", '1'}, {"not present", '0'},
      {"power good", '1'}, {"not power good", '0'}, {"", '-'}};
  return digits.at(word);
}

std::string Describe(const std::vector<PSUStatus>& psus) {
  std::string epow;
  std::string throttle;
  std::string present;
  std::string powerGood;
  for (const PSUStatus& psu : psus) {
    epow += Digit(psu.epow);
    throttle += Digit(psu.throttle);
    present += Digit(psu.present);
    powerGood += Digit(psu.powerGood);
  }
  return epow + '|' + throttle + '|' + present + '|' + powerGood;
}

std::string Words(const PSUStatus& psu) {
  return psu.epow + ", " + psu.throttle + ", " + psu.present + ", " + psu.powerGood;
}

class PsuStatusQuery : public Double::InventoryTest {
 protected:
  PsuStatusQuery() { Reset(); }

  void Reset() { out.assign(3, {"trigger", "not trigger", "present", "power good"}); }

  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    Reset();
    platform.Expect(0x32, 0x91, {}, response, completionCode);
    return inventory.GetPSUStatus(out);
  }

  /// Expects, in the output and in the last line, that slots 1 to 8 have the bits of the flag bytes
  /// 0xB1 (EPOW), 0x4E (throttle), 0xFF (present) and 0xE8 (power good) from the lowest bit on;
  /// that every flag of slots 9 to 32 is clear; and that slots 33 to 40 have those of 1 to 8 again.
  void ExpectFlagsAgainFromSlot33(std::size_t count) const {
    const std::string zeros(24, '0');
    const std::string epow = "10001101" + zeros + "10001101";
    const std::string throttle = "01110010" + zeros + "01110010";
    const std::string present = "11111111" + zeros + "11111111";
    const std::string powerGood = "00010111" + zeros + "00010111";
    const std::string circumstance = "SMM type " +
                                     std::to_string(static_cast<int>(inventory.smmType)) + ", " +
                                     std::to_string(count) + " slots";
    EXPECT_EQ(Describe(out), epow.substr(0, count) + '|' + throttle.substr(0, count) + '|' +
                                 present.substr(0, count) + '|' + powerGood.substr(0, count))
        << circumstance;
    std::string text = kHeading;
    for (std::size_t index = 0; index < count; ++index) {
      text += "PSU" + std::to_string(index + 1) + ":\n\tPSU EPOW " + epow[index] +
              "\n\tPSU THROTTLE " + throttle[index] + "\n\tPSU PRESENT " + present[index] +
              "\n\tPSU PWR GOOD " + powerGood[index];
    }
    EXPECT_EQ(platform.lines.back(), (Line{4, text})) << circumstance;
  }

  std::vector<PSUStatus> out;
};

TEST_F(PsuStatusQuery, EveryLengthAndCompletionCodeHasItsOutcome) {
  inventory.psuSlotCount = 8;
  platform.logThreshold = 0;
  const std::string empty = "--------|--------|--------|--------";
  const std::string firstGeneration = "10001000|00001100|11110010|01110110";
  const std::string sixBytes = "10001000|11110010|10110001|00000000";
  const std::string secondGeneration = "10001000|11110010|10110001|11010011";
  const std::string tenBytes = "10001000|10110001|10010000|11010011";
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 5).Always({UnusableAnswer, empty}),
       OfSmmType(0)
           .Lengths(6, 13)
           .WithCode0({Success, firstGeneration})
           .WithOtherCodes({UnusableAnswer, empty}),
       OfSmmType(7).Lengths(0, 5).Always({UnusableAnswer, empty}),
       OfSmmType(7)
           .Lengths(6, 13)
           .WithCode0({Success, firstGeneration})
           .WithOtherCodes({UnusableAnswer, empty}),
       OfSmmType(1).Lengths(0, 5).Always({UnusableAnswer, empty}),
       OfSmmType(1)
           .Lengths(6, 6)
           .WithCode0({Success, sixBytes})
           .WithOtherCodes({UnusableAnswer, empty}),
       OfSmmType(1)
           .Lengths(7, 9)
           .WithCode0({Success, secondGeneration})
           .WithOtherCodes({UnusableAnswer, empty}),
       OfSmmType(1)
           .Lengths(10, 10)
           .WithCode0({Success, tenBytes})
           .WithOtherCodes({UnusableAnswer, empty}),
       OfSmmType(1)
           .Lengths(11, 13)
           .WithCode0({Success, secondGeneration})
           .WithOtherCodes({UnusableAnswer, empty})},
      {0x11, 0x30, 0x4F, 0x6E, 0x8D, 0xAC, 0xCB, 0xEA, 0x09, 0x28, 0x47, 0x66, 0x85},
      [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return Describe(out); });
}

TEST_F(PsuStatusQuery, EachPsuHasItsWords) {
  EXPECT_EQ(Get({0x00, 0x00, 0x03, 0x01, 0x00, 0x00}), Success);
  ASSERT_EQ(out.size(), 2U);
  EXPECT_EQ(Words(out[0]), "not trigger, not trigger, present, power good");
  EXPECT_EQ(Words(out[1]), "not trigger, not trigger, present, not power good");
}

TEST_F(PsuStatusQuery, FlagsOfEitherValueHaveTheirWords) {
  EXPECT_EQ(Get({0x01, 0x02, 0x01, 0x02, 0x00, 0x00}), Success);
  ASSERT_EQ(out.size(), 2U);
  EXPECT_EQ(Words(out[0]), "trigger, not trigger, present, not power good");
  EXPECT_EQ(Words(out[1]), "not trigger, trigger, not present, power good");
}

TEST_F(PsuStatusQuery, BitsRepeatFromPsu33OnAndAre0Between) {
  struct Row {
    int smmType;
    Bytes answer;
  };
  for (const Row& row :
       std::vector<Row>{{0, {0xB1, 0x4E, 0xFF, 0xE8, 0x00, 0x00}},
                        {7, {0xB1, 0x4E, 0xFF, 0xE8, 0x00, 0x00}},
                        {1, {0xB1, 0x55, 0x4E, 0x55, 0xFF, 0x55, 0xE8}},
                        {1, {0xB1, 0x55, 0x55, 0x55, 0x4E, 0x55, 0xE8, 0x55, 0xFF, 0x55}}}) {
    inventory.smmType = static_cast<SMMIype>(row.smmType);
    for (const std::size_t count : Double::kSlotCounts) {
      inventory.psuSlotCount = count;
      EXPECT_EQ(Get(row.answer), Success);
      ExpectFlagsAgainFromSlot33(count);
    }
  }
}

TEST_F(PsuStatusQuery, FailureLeavesOneEmptyRecordASlot) {
  for (const int smmType : {0, 1, 7}) {
    inventory.smmType = static_cast<SMMIype>(smmType);
    for (const std::size_t count : Double::kSlotCounts) {
      inventory.psuSlotCount = count;
      EXPECT_EQ(Get({1, 2, 3, 4, 5}), UnusableAnswer);
      const std::string empty(count, '-');
      EXPECT_EQ(Describe(out), empty + '|' + empty + '|' + empty + '|' + empty)
          << "SMM type " << smmType << ", " << count << " slots";
    }
  }
}

TEST_F(PsuStatusQuery, EveryFlagByteIsReadBitByBit) {
  inventory.psuSlotCount = 8;
  platform.logThreshold = 0;
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    std::string bits;
    for (unsigned int bit = 0; bit < 8; ++bit) {
      bits += static_cast<char>('0' + (value / (1U << bit)) % 2);
    }
    EXPECT_EQ(Get(Bytes(6, static_cast<std::uint8_t>(value))), Success);
    EXPECT_EQ(Describe(out), bits + '|' + bits + '|' + bits + '|' + bits) << "byte " << value;
  }
}

TEST_F(PsuStatusQuery, FlagsAreLoggedAsOneLineAtThreshold4) {
  const Bytes answer = {0x00, 0x00, 0x03, 0x01, 0x00, 0x00};
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x91 data=", answer) +
          std::vector<Line>{{4, kHeading + "PSU1:\n\tPSU EPOW 0\n\tPSU THROTTLE 0\n\tPSU PRESENT 1"
                                           "\n\tPSU PWR GOOD 1PSU2:\n\tPSU EPOW 0\n\tPSU THROTTLE "
                                           "0\n\tPSU PRESENT 1\n\tPSU PWR GOOD 0"}},
      [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(PsuStatusQuery, NoSlotLogsTheHeadingAloneAndEmptiesTheOutput) {
  inventory.psuSlotCount = 0;
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x91 data=", Bytes(6, 0xFF)) + std::vector<Line>{{4, kHeading}},
      [&] {
        EXPECT_EQ(Get(Bytes(6, 0xFF)), Success);
        EXPECT_TRUE(out.empty());
      });
}

TEST_F(PsuStatusQuery, TenSecondGenerationBytesAreLoggedWithTheirFlagsAndNotAnew) {
  inventory.smmType = SMM_SECOND_GENERATION;
  inventory.psuSlotCount = 1;
  const Bytes answer = {1, 0, 0, 0, 1, 0, 1, 0, 0, 0};
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x91 data=", answer) +
          std::vector<Line>{{4, kHeading + "PSU1:\n\tPSU EPOW 1\n\tPSU THROTTLE 1\n\tPSU PRESENT 0"
                                           "\n\tPSU PWR GOOD 1"}},
      [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(PsuStatusQuery, FailureIsLoggedAtThreshold4Alone) {
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x91 data=", {}) +
          std::vector<Line>{{4, kHeading + "\nGet PSU statue failed with completionCode is 193, "
                                           "response.size() is 0"}},
      [&] { EXPECT_EQ(Get({}, 0xC1), UnusableAnswer); });
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x91 data=", {1, 2, 3, 4, 5}) +
          std::vector<Line>{{4, kHeading + "\nGet PSU statue failed with completionCode is 0, "
                                           "response.size() is 5"}},
      [&] {
        EXPECT_EQ(Get({1, 2, 3, 4, 5}), UnusableAnswer);
      });
}

TEST_F(PsuStatusQuery, RecordsAreStoredBeforeTheirLine) {
  std::string seen;
  platform.whileWritten = [&](const Line&) { seen = Describe(out); };
  EXPECT_EQ(Get({0x00, 0x00, 0x03, 0x01, 0x00, 0x00}), Success);
  EXPECT_EQ(seen, "00|00|11|10");
  EXPECT_EQ(Get({}, 0xC1), UnusableAnswer);
  EXPECT_EQ(seen, "--|--|--|--");
}

TEST_F(PsuStatusQuery, OutputIsEmptiedBeforeItIsFilledWhateverTheAnswer) {
  inventory.psuSlotCount = std::numeric_limits<std::uint64_t>::max();
  EXPECT_THROW(Get(Bytes(6, 0x01)), std::length_error);
  EXPECT_TRUE(out.empty());
  EXPECT_THROW(Get({}, 0xC1), std::length_error);
  EXPECT_TRUE(out.empty());
}

TEST_F(PsuStatusQuery, FailedLengthBeyond255IsLoggedAsItIs) {
  EXPECT_EQ(Get(Bytes(300, 0x01), 0xC1), UnusableAnswer);
  EXPECT_THAT(platform.lines.back().text, ::testing::EndsWith("response.size() is 300"));
}

TEST_F(PsuStatusQuery, FailedSecondGenerationAnswerOfTenBytesIsLoggedWithThatSize) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get(Bytes(10, 0x01), 0xFF), UnusableAnswer);
  EXPECT_EQ(
      platform.lines.back(),
      (Line{4, kHeading + "\nGet PSU statue failed with completionCode is 255, response.size() is "
                          "10"}));
}

TEST_F(PsuStatusQuery, StatusOfTheExchangeIsHandedOnAndTheOutputLeft) {
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetPSUStatus(out); });
  EXPECT_EQ(Describe(out), "111|000|111|111");
}

TEST_F(PsuStatusQuery, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get(Bytes(12, 0x01), 0xC1), UnusableAnswer);
  EXPECT_EQ(
      platform.lines.back(),
      (Line{4, kHeading + "\nGet PSU statue failed with completionCode is 193, response.size() is "
                          "12"}));
  inventory.psuSlotCount = 12;
  EXPECT_EQ(Get(Bytes(6, 0x01)), Success);
  EXPECT_THAT(platform.lines.back().text,
              ::testing::EndsWith("PSU12:\n\tPSU EPOW 0\n\tPSU THROTTLE 0\n\tPSU PRESENT 0\n\tPSU "
                                  "PWR GOOD 0"));
}

TEST(PsuStatusFlags, NoneIsSetBeforeAnAnswerIsRead) {
  EXPECT_EQ(PsuStatusFlagsText(PsuStatusFlags(), 1),
            "PSU1:\n\tPSU EPOW 0\n\tPSU THROTTLE 0\n\tPSU PRESENT 0\n\tPSU PWR GOOD 0");
}

}  // namespace
}  // namespace Tavrin
