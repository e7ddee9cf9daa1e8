#include "module/smm/smm_inventory/impl/Power.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::ExchangeLines;
using Double::kRaisesBadAlloc;
using Double::Line;
using Double::OfSmmType;
using Double::TrimLines;
using StatusCode::Success;
using StatusCode::UnusableAnswer;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Bytes kReadings = {0x11, 0x30, 0x4F, 0x6E, 0x8D, 0xAC, 0xCB,
                         0xEA, 0x09, 0x28, 0x47, 0x66, 0x85};

std::string Describe(const ChassisPowerCon& power) {
  return power.minPower + '|' + power.avgPower + '|' + power.maxPower;
}

std::string Describe(const ChassisPowerCap& cap) {
  return cap.minCap + '|' + cap.maxCap + '|' + cap.protectiveCap + '|' + cap.userCap + '|' +
         cap.thermalCap;
}

struct SelectorRow {
  std::int32_t platformId;
  std::uint8_t selector;
};
const std::vector<SelectorRow> kSelectors = {{253, 0x0D}, {254, 0x05}, {0x55, 0x05},
                                             {0, 0x05},   {252, 0x05}, {-3, 0x05}};

class ChassisPower : public Double::InventoryTest {
 protected:
  static constexpr const char* kAsPassed = "min|avg|max";

  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    out = {"min", "avg", "max"};
    platform.Expect(0x32, 0x98, {0x05}, response, completionCode);
    return inventory.GetChassisPowerConsumption(out);
  }

  ChassisPowerCon out{"min", "avg", "max"};
};

TEST_F(ChassisPower, EveryLengthAndCompletionCodeHasItsOutcome) {
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 5).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(0)
           .Lengths(6, 13)
           .WithCode0({Success, "12305|28239|44173"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(7).Lengths(0, 5).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(7)
           .Lengths(6, 13)
           .WithCode0({Success, "12305|28239|44173"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(1).Lengths(0, 0).Always({kRaisesBadAlloc, kAsPassed}),
       OfSmmType(1).Lengths(1, 6).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(1)
           .Lengths(7, 13)
           .WithCode0({Success, "20272|36206|52140"})
           .WithOtherCodes({UnusableAnswer, kAsPassed})},
      kReadings, [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return Describe(out); });
}

TEST_F(ChassisPower, LowByteComesFirst) {
  EXPECT_EQ(Get({0x34, 0x12, 0x00, 0x01, 0x01, 0x00}), Success);
  EXPECT_EQ(Describe(out), "4660|256|1");
}

TEST_F(ChassisPower, LowestAndHighestReadingsStayNumbers) {
  EXPECT_EQ(Get({0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00}), Success);
  EXPECT_EQ(Describe(out), "0|65535|0");
}

TEST_F(ChassisPower, SelectorIs0x0DOnPlatform253And0x05OnEveryOther) {
  for (const SelectorRow& row : kSelectors) {
    inventory.smmStatus.platformId = row.platformId;
    platform.Expect(0x32, 0x98, {row.selector}, kReadings);
    EXPECT_EQ(inventory.GetChassisPowerConsumption(out), Success) << row.platformId;
  }
}

TEST_F(ChassisPower, ReadingsAreLoggedAtThreshold4) {
  const Bytes answer = {120, 0, 0x5E, 0x01, 0x9A, 0x01};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x98 data=0x5 ", answer) +
                  std::vector<Line>{{4, "Min:120,Avg:350,Max:410"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(ChassisPower, SecondGenerationLogsTheShortenedAnswerBeforeTheReadings) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes shortened = {120, 0, 0x5E, 0x01, 0x9A, 0x01};
  const Bytes answer = {0x77, 120, 0, 0x5E, 0x01, 0x9A, 0x01};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x98 data=0x5 ", answer) + TrimLines(shortened) +
                  std::vector<Line>{{4, "Min:120,Avg:350,Max:410"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(ChassisPower, ShortAnswerIsLoggedWithCode0) {
  const Bytes answer = {1, 2, 3, 4, 5};
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x98 data=0x5 ", answer) +
          std::vector<Line>{{1, "Get smm chassis power consumption failed with error code:0"}},
      [&] { EXPECT_EQ(Get(answer), UnusableAnswer); });
}

TEST_F(ChassisPower, CompletionCodeIsLoggedInDecimalAfterTheShortenedAnswer) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x98 data=0x5 ", {0x77, 0x41}) + TrimLines({0x41}) +
          std::vector<Line>{{1, "Get smm chassis power consumption failed with error code:193"}},
      [&] {
        EXPECT_EQ(Get({0x77, 0x41}, 0xC1), UnusableAnswer);
      });
}

TEST_F(ChassisPower, EmptySecondGenerationAnswerRaisesBadAllocAfterTheFirstLine) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x98 data=0x5 ", {}) + std::vector<Line>{{4, "it is smm2..."}},
      [&] { EXPECT_THROW(Get({}), std::bad_alloc); });
}

TEST_F(ChassisPower, StatusOfTheExchangeIsHandedOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetChassisPowerConsumption(out); });
  EXPECT_EQ(Describe(out), kAsPassed);
}

TEST_F(ChassisPower, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({0xFF, 0xFF, 0xE8, 0x03, 0x64, 0x00}), Success);
  EXPECT_EQ(Describe(out), "65535|1000|100");
  EXPECT_EQ(platform.lines.back(), (Line{4, "Min:65535,Avg:1000,Max:100"}));
  EXPECT_EQ(Get({}, 0xC1), UnusableAnswer);
  EXPECT_EQ(platform.lines.back(),
            (Line{1, "Get smm chassis power consumption failed with error code:193"}));
}

TEST_F(ChassisPower, ReadingsAreStoredBeforeTheirLine) {
  std::string seen;
  platform.whileWritten = [&](const Line&) { seen = Describe(out); };
  EXPECT_EQ(Get({1, 0, 2, 0, 3, 0}), Success);
  EXPECT_EQ(platform.lines.back(), (Line{4, "Min:1,Avg:2,Max:3"}));
  EXPECT_EQ(seen, "1|2|3");
}

class ChassisCap : public Double::InventoryTest {
 protected:
  static constexpr const char* kAsPassed = "min|max|protective|user|thermal";

  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    out = {"min", "max", "protective", "user", "thermal"};
    platform.Expect(0x32, 0x9D, {0x05}, response, completionCode);
    return inventory.GetChassisPowerCap(out);
  }

  ChassisPowerCap out{"min", "max", "protective", "user", "thermal"};
};

TEST_F(ChassisCap, EveryLengthAndCompletionCodeHasItsOutcome) {
  const std::string firstGeneration = "12305|28239|44173|60107|10249";
  const std::string secondGeneration = "20272|36206|52140|2538|18216";
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 9).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(0)
           .Lengths(10, 13)
           .WithCode0({Success, firstGeneration})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(7).Lengths(0, 9).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(7)
           .Lengths(10, 13)
           .WithCode0({Success, firstGeneration})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(1).Lengths(0, 0).Always({kRaisesBadAlloc, kAsPassed}),
       OfSmmType(1).Lengths(1, 10).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(1)
           .Lengths(11, 13)
           .WithCode0({Success, secondGeneration})
           .WithOtherCodes({UnusableAnswer, kAsPassed})},
      kReadings, [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return Describe(out); });
}

TEST_F(ChassisCap, EachCapOf0IsNotAvailableByItself) {
  const std::vector<std::string> expected = {"N/A|2|3|4|5", "1|N/A|3|4|5", "1|2|N/A|4|5",
                                             "1|2|3|N/A|5", "1|2|3|4|N/A"};
  for (std::size_t field = 0; field < expected.size(); ++field) {
    Bytes answer = {1, 0, 2, 0, 3, 0, 4, 0, 5, 0};
    answer[2 * field] = 0;
    EXPECT_EQ(Get(answer), Success);
    EXPECT_EQ(Describe(out), expected[field]);
  }
}

TEST_F(ChassisCap, CapsOf0AreNotAvailableAtEveryThreshold) {
  for (const unsigned int threshold : {0U, 1U, 2U, 3U, 4U}) {
    platform.logThreshold = threshold;
    EXPECT_EQ(Get(Bytes(10, 0x00)), Success);
    EXPECT_EQ(Describe(out), "N/A|N/A|N/A|N/A|N/A") << "threshold " << threshold;
  }
}

TEST_F(ChassisCap, HighestAndSmallCapsStayNumbers) {
  EXPECT_EQ(Get({0xFF, 0xFF, 0x00, 0x01, 0x0A, 0x00, 0x64, 0x00, 0xFF, 0xFF}), Success);
  EXPECT_EQ(Describe(out), "65535|256|10|100|65535");
}

TEST_F(ChassisCap, SelectorIs0x0DOnPlatform253And0x05OnEveryOther) {
  for (const SelectorRow& row : kSelectors) {
    inventory.smmStatus.platformId = row.platformId;
    platform.Expect(0x32, 0x9D, {row.selector}, kReadings);
    EXPECT_EQ(inventory.GetChassisPowerCap(out), Success) << row.platformId;
  }
}

TEST_F(ChassisCap, LineShows0WhereTheRecordHoldsNotAvailable) {
  const Bytes answer = {0, 0, 0xFF, 0xFF, 0, 0, 0xE8, 0x03, 0, 0};
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x9d data=0x5 ", answer) +
          std::vector<Line>{{4, "Min:0,Max:65535,ProtectiveCap:0,UserCap:1000,ThermalCap:0"}},
      [&] { EXPECT_EQ(Get(answer), Success); });
  EXPECT_EQ(Describe(out), "N/A|65535|N/A|1000|N/A");
}

TEST_F(ChassisCap, SecondGenerationLogsTheShortenedAnswerBeforeTheCaps) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x77, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x9d data=0x5 ", answer) +
                  TrimLines({1, 0, 2, 0, 3, 0, 4, 0, 5, 0}) +
                  std::vector<Line>{{4, "Min:1,Max:2,ProtectiveCap:3,UserCap:4,ThermalCap:5"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(ChassisCap, FailureHasTheSameWordsInBothGenerations) {
  const Bytes answer = {0x77, 0x41};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x9d data=0x5 ", answer) +
                  std::vector<Line>{{1, "Get smm chassis power cap failed with error code:0"}},
              [&] { EXPECT_EQ(Get(answer), UnusableAnswer); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x9d data=0x5 ", answer) + TrimLines({0x41}) +
                  std::vector<Line>{{1, "Get smm chassis power cap failed with error code:255"}},
              [&] { EXPECT_EQ(Get(answer, 0xFF), UnusableAnswer); });
}

TEST_F(ChassisCap, EmptySecondGenerationAnswerRaisesBadAllocAfterTheFirstLine) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x9d data=0x5 ", {}) + std::vector<Line>{{4, "it is smm2..."}},
      [&] { EXPECT_THROW(Get({}), std::bad_alloc); });
}

TEST_F(ChassisCap, StatusOfTheExchangeIsHandedOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetChassisPowerCap(out); });
  EXPECT_EQ(Describe(out), kAsPassed);
}

TEST_F(ChassisCap, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({0xFF, 0xFF, 0xE8, 0x03, 0x64, 0x00, 0x10, 0x27, 0x0A, 0x00}), Success);
  EXPECT_EQ(Describe(out), "65535|1000|100|10000|10");
  EXPECT_EQ(platform.lines.back(),
            (Line{4, "Min:65535,Max:1000,ProtectiveCap:100,UserCap:10000,ThermalCap:10"}));
  EXPECT_EQ(Get({}, 0xC1), UnusableAnswer);
  EXPECT_EQ(platform.lines.back(),
            (Line{1, "Get smm chassis power cap failed with error code:193"}));
}

TEST_F(ChassisCap, CapsAreStoredRawBeforeTheirLineAndReplacedBehindIt) {
  std::string seen;
  platform.whileWritten = [&](const Line&) { seen = Describe(out); };
  EXPECT_EQ(Get({0, 0, 0xFF, 0xFF, 0, 0, 0xE8, 0x03, 0, 0}), Success);
  EXPECT_EQ(platform.lines.back(),
            (Line{4, "Min:0,Max:65535,ProtectiveCap:0,UserCap:1000,ThermalCap:0"}));
  EXPECT_EQ(seen, "0|65535|0|1000|0");
  EXPECT_EQ(Describe(out), "N/A|65535|N/A|1000|N/A");
}

class NodePower : public Double::InventoryTest {
 protected:
  static constexpr const char* kAsPassed = "min|avg|max";

  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    out = {"min", "avg", "max"};
    platform.Expect(0x32, 0x98, {0x03}, response, completionCode);
    return inventory.GetNodePowerConsumption(3, out);
  }

  ChassisPowerCon out{"min", "avg", "max"};
};

TEST_F(NodePower, EveryLengthAndCompletionCodeHasItsOutcome) {
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 5).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(0)
           .Lengths(6, 13)
           .WithCode0({Success, "12305|28239|44173"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(7).Lengths(0, 5).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(7)
           .Lengths(6, 13)
           .WithCode0({Success, "12305|28239|44173"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(1).Lengths(0, 5).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(1)
           .Lengths(6, 6)
           .WithCode0({Success, "12305|28239|44173"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(1)
           .Lengths(7, 13)
           .WithCode0({Success, "20272|36206|52140"})
           .WithOtherCodes({UnusableAnswer, kAsPassed})},
      kReadings, [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return Describe(out); });
}

TEST_F(NodePower, EveryNodeUpToTheCountIsAskedByItsNumber) {
  for (const unsigned long count : {4UL, 12UL}) {
    inventory.nodeCount = count;
    for (unsigned long node = 1; node <= count; ++node) {
      platform.Expect(0x32, 0x98, {static_cast<std::uint8_t>(node)}, kReadings);
      EXPECT_EQ(inventory.GetNodePowerConsumption(node, out), Success) << node << " of " << count;
    }
  }
}

TEST_F(NodePower, NodeOutOfRangeIsRefusedAndNothingSent) {
  for (const unsigned long count : {4UL, 12UL}) {
    inventory.nodeCount = count;
    for (const unsigned long node :
         {0UL, count + 1, 257UL, std::numeric_limits<unsigned long>::max()}) {
      platform.ForgetWhatHappened();
      EXPECT_EQ(inventory.GetNodePowerConsumption(node, out), UnusableAnswer);
      EXPECT_THAT(platform.events, IsEmpty()) << node << " of " << count;
      EXPECT_THAT(platform.lines,
                  ElementsAre(Line{1, "node " + std::to_string(node) + "is wrong: need 1-" +
                                          std::to_string(count)}));
    }
  }
  EXPECT_EQ(Describe(out), kAsPassed);
}

TEST_F(NodePower, RefusalIsLoggedFromThreshold1On) {
  ExpectLines({{1, "node 5is wrong: need 1-4"}},
              [&] { EXPECT_EQ(inventory.GetNodePowerConsumption(5, out), UnusableAnswer); });
}

TEST_F(NodePower, LowestAndHighestReadingsAreNotAvailable) {
  struct Row {
    Bytes answer;
    std::string expected;
  };
  for (const Row& row : std::vector<Row>{{{0x00, 0x00, 1, 0, 2, 0}, "N/A|1|2"},
                                         {{1, 0, 0x00, 0x00, 2, 0}, "1|N/A|2"},
                                         {{1, 0, 2, 0, 0x00, 0x00}, "1|2|N/A"},
                                         {{0xFF, 0xFF, 1, 0, 2, 0}, "N/A|1|2"},
                                         {{1, 0, 0xFF, 0xFF, 2, 0}, "1|N/A|2"},
                                         {{1, 0, 2, 0, 0xFF, 0xFF}, "1|2|N/A"},
                                         {{0xFF, 0x00, 0x00, 0xFF, 0xFE, 0xFF}, "255|65280|65534"},
                                         {{0xFF, 0xFE, 0x00, 0x01, 0x0A, 0x00}, "65279|256|10"}}) {
    EXPECT_EQ(Get(row.answer), Success);
    EXPECT_EQ(Describe(out), row.expected);
  }
}

TEST_F(NodePower, ReadingsAreNotAvailableAtEveryThreshold) {
  for (const unsigned int threshold : {0U, 1U, 2U, 3U, 4U}) {
    platform.logThreshold = threshold;
    EXPECT_EQ(Get({0, 0, 0xFF, 0xFF, 0, 0}), Success);
    EXPECT_EQ(Describe(out), "N/A|N/A|N/A") << "threshold " << threshold;
  }
}

TEST_F(NodePower, LineShowsTheNumbersWhereTheRecordHoldsNotAvailable) {
  const Bytes answer = {0x00, 0x00, 0xFF, 0xFF, 0x64, 0x00};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x98 data=0x3 ", answer) +
                  std::vector<Line>{{4, "Min:0,Avg:65535,Max:100"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
  EXPECT_EQ(Describe(out), "N/A|N/A|100");
}

TEST_F(NodePower, SecondGenerationAnswerOfSevenBytesIsShortened) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x77, 1, 0, 2, 0, 3, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x98 data=0x3 ", answer) + TrimLines({1, 0, 2, 0, 3, 0}) +
                  std::vector<Line>{{4, "Min:1,Avg:2,Max:3"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(NodePower, SecondGenerationAnswerOfSixBytesIsNotShortened) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {1, 0, 2, 0, 3, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x98 data=0x3 ", answer) +
                  std::vector<Line>{{4, "Min:1,Avg:2,Max:3"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(NodePower, SecondGenerationFailureIsNotShortened) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x77, 1, 0, 2, 0, 3, 0};
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x98 data=0x3 ", answer) +
          std::vector<Line>{{1, "Get smm chassis power consumption failed with error code:193"}},
      [&] { EXPECT_EQ(Get(answer, 0xC1), UnusableAnswer); });
}

TEST_F(NodePower, ShortAnswerIsLoggedWithCode0) {
  const Bytes answer = {1, 2, 3, 4, 5};
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0x98 data=0x3 ", answer) +
          std::vector<Line>{{1, "Get smm chassis power consumption failed with error code:0"}},
      [&] { EXPECT_EQ(Get(answer), UnusableAnswer); });
}

TEST_F(NodePower, StatusOfTheExchangeIsHandedOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetNodePowerConsumption(1, out); });
  EXPECT_EQ(Describe(out), kAsPassed);
}

TEST_F(NodePower, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({0xFF, 0xFF, 0xE8, 0x03, 0x64, 0x00}), Success);
  EXPECT_EQ(Describe(out), "N/A|1000|100");
  EXPECT_EQ(platform.lines.back(), (Line{4, "Min:65535,Avg:1000,Max:100"}));
  EXPECT_EQ(Get({}, 0xC1), UnusableAnswer);
  EXPECT_EQ(platform.lines.back(),
            (Line{1, "Get smm chassis power consumption failed with error code:193"}));
  inventory.nodeCount = 12;
  EXPECT_EQ(inventory.GetNodePowerConsumption(12345, out), UnusableAnswer);
  EXPECT_EQ(platform.lines.back(), (Line{1, "node 12345is wrong: need 1-12"}));
}

TEST_F(NodePower, ReadingsAreStoredRawBeforeTheirLineAndReplacedBehindIt) {
  std::string seen;
  platform.whileWritten = [&](const Line&) { seen = Describe(out); };
  EXPECT_EQ(Get({0, 0, 0xFF, 0xFF, 0x64, 0}), Success);
  EXPECT_EQ(platform.lines.back(), (Line{4, "Min:0,Avg:65535,Max:100"}));
  EXPECT_EQ(seen, "0|65535|100");
  EXPECT_EQ(Describe(out), "N/A|N/A|100");
}

TEST(PowerDecoder, EveryLowAndHighByteIsReadLittleEndian) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const auto byte = static_cast<std::uint8_t>(value);
    const ChassisPowerCon power = DecodePower({byte, 0x00, 0x00, byte, byte, byte});
    EXPECT_EQ(power.minPower, std::to_string(value));
    EXPECT_EQ(power.avgPower, std::to_string(256 * value));
    EXPECT_EQ(power.maxPower, std::to_string(257 * value));
  }
}

}  // namespace
}  // namespace Tavrin
