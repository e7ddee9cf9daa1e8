#include "module/smm/smm_inventory/impl/PsuFan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
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
using StatusCode::ConnectionKindNotAdmitted;
using StatusCode::NotConnected;
using StatusCode::Success;
using ::testing::IsEmpty;

const Bytes kSecondGenerationAnswer = {0xAA, 0x10, 0x27, 0x32, 0x00, 0x00, 0x00, 0x02};
const Bytes kFirstGenerationAnswer = {0xE8, 0x03, 0x00, 0x01};

class PsuFan : public Double::InventoryTest {
 protected:
  static constexpr const char* kAsPassed = "held before|1|2|3|4|5;";

  PsuFan() { Reset(); }

  void Reset() { out = {{"held before", "1", "2", "3", "4", "5"}}; }

  void Expect(std::uint8_t slot, const Bytes& response, std::uint8_t completionCode = 0) {
    platform.Expect(0x32, 0xA5, {slot}, response, completionCode);
  }

  /// Asks the only slot.
  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    Reset();
    inventory.psuSlotCount = 1;
    Expect(1, response, completionCode);
    return inventory.GetPSUFanSpeed(out);
  }

  /// Asks so many slots, whose answers are expected already.
  void ExpectOutput(std::uint64_t slotCount, const std::string& expected) {
    Reset();
    inventory.psuSlotCount = slotCount;
    EXPECT_EQ(inventory.GetPSUFanSpeed(out), Success);
    EXPECT_EQ(Output(), expected) << "SMM type " << static_cast<int>(inventory.smmType) << ", "
                                  << slotCount << " slots";
  }

  std::string Output() const {
    std::string text;
    for (const PSUFanSpeed& fans : out) {
      text += fans.name + '|' + fans.speedA + '|' + fans.patA + '|' + fans.speedB + '|' +
              fans.patB + '|' + fans.status + ';';
    }
    return text;
  }

  std::vector<PSUFanSpeed> out;
};

TEST_F(PsuFan, EveryLengthAndCompletionCodeHasItsOutcome) {
  const std::string firstGeneration = std::string(kAsPassed) + "PSU1|12305|79|||Normal;";
  const std::string secondGeneration = std::string(kAsPassed) + "PSU1|20272|2|44173|203|Abnormal;";
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 3).Always({Success, kAsPassed}),
       OfSmmType(0)
           .Lengths(4, 10)
           .WithCode0({Success, firstGeneration})
           .WithOtherCodes({Success, kAsPassed}),
       OfSmmType(7).Lengths(0, 3).Always({Success, kAsPassed}),
       OfSmmType(7)
           .Lengths(4, 10)
           .WithCode0({Success, firstGeneration})
           .WithOtherCodes({Success, kAsPassed}),
       OfSmmType(1).Lengths(0, 7).Always({Success, kAsPassed}),
       OfSmmType(1)
           .Lengths(8, 10)
           .WithCode0({Success, secondGeneration})
           .WithOtherCodes({Success, kAsPassed})},
      {0x11, 0x30, 0x4F, 0x02, 0x8D, 0xAC, 0xCB, 0x01, 0x09, 0x28},
      [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return Output(); });
}

TEST_F(PsuFan, EverySlotIsAskedInOrderAndAppended) {
  for (const int smmType : {0, 7}) {
    inventory.smmType = static_cast<SMMIype>(smmType);
    for (const std::uint8_t count : Double::kSlotCounts) {
      std::string expected = kAsPassed;
      for (std::uint8_t slot = 1; slot <= count; ++slot) {
        Expect(slot, {slot, 0x01, slot, 0x02});
        expected += "PSU" + std::to_string(slot) + '|' + std::to_string(256 + slot) + '|' +
                    std::to_string(slot) + "|||Normal;";
      }
      ExpectOutput(count, expected);
    }
  }
}

TEST_F(PsuFan, EverySecondGenerationSlotIsAskedInOrderAndAppended) {
  inventory.smmType = SMM_SECOND_GENERATION;
  for (const std::uint8_t count : Double::kSlotCounts) {
    std::string expected = kAsPassed;
    for (std::uint8_t slot = 1; slot <= count; ++slot) {
      const auto patB = static_cast<std::uint8_t>(100 + slot);
      Expect(slot, {0xAA, slot, 0x01, slot, slot, 0x02, patB, 0x02});
      expected += "PSU" + std::to_string(slot) + '|' + std::to_string(256 + slot) + '|' +
                  std::to_string(slot) + '|' + std::to_string(512 + slot) + '|' +
                  std::to_string(patB) + "|Normal;";
    }
    ExpectOutput(count, expected);
  }
}

TEST_F(PsuFan, EachSlotHasACompletionCodeOfItsOwn) {
  Expect(1, {}, 0xC1);
  Expect(2, kFirstGenerationAnswer, 0xC1);
  platform.script.back().filling = Double::Filling::ReplacesAllButTheCode;
  ExpectOutput(2, std::string(kAsPassed) + "PSU2|1000|N/A|||Abnormal;");
}

TEST_F(PsuFan, NoSlotSendsAndLogsNothing) {
  inventory.psuSlotCount = 0;
  EXPECT_EQ(inventory.GetPSUFanSpeed(out), Success);
  EXPECT_EQ(Output(), kAsPassed);
  EXPECT_THAT(platform.events, IsEmpty());
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(PsuFan, EveryStatusByteHasItsTextInBothGenerations) {
  const std::map<unsigned int, std::string> named = {
      {0, "Not Present"}, {1, "Abnormal"}, {2, "Normal"}};
  for (unsigned int code = 0; code <= 0xFF; ++code) {
    const std::string expected = named.count(code) != 0 ? named.at(code) : "Unknown";
    const auto byte = static_cast<std::uint8_t>(code);
    inventory.smmType = SMM_FIRST_GENERATION;
    EXPECT_EQ(Get({3, 3, 3, byte}), Success);
    EXPECT_EQ(out.back().status, expected) << "byte " << code;
    inventory.smmType = SMM_SECOND_GENERATION;
    EXPECT_EQ(Get({3, 3, 3, 3, 3, 3, 3, byte}), Success);
    EXPECT_EQ(out.back().status, expected) << "byte " << code;
  }
}

TEST_F(PsuFan, EachSecondGenerationReadingOf0IsNotAvailableByItself) {
  inventory.smmType = SMM_SECOND_GENERATION;
  struct Row {
    Bytes answer;
    std::string expected;
  };
  for (const Row& row : std::vector<Row>{{{9, 0, 0, 2, 3, 0, 4, 2}, "PSU1|N/A|2|3|4|Normal;"},
                                         {{9, 1, 0, 0, 3, 0, 4, 2}, "PSU1|1|N/A|3|4|Normal;"},
                                         {{9, 1, 0, 2, 0, 0, 4, 2}, "PSU1|1|2|N/A|4|Normal;"},
                                         {{9, 1, 0, 2, 3, 0, 0, 2}, "PSU1|1|2|3|N/A|Normal;"}}) {
    EXPECT_EQ(Get(row.answer), Success);
    EXPECT_EQ(Output(), kAsPassed + row.expected);
  }
}

TEST_F(PsuFan, EachFirstGenerationReadingOf0IsNotAvailableAndFanBStaysEmpty) {
  EXPECT_EQ(Get({0, 0, 7, 2}), Success);
  EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|N/A|7|||Normal;");
  EXPECT_EQ(Get(kFirstGenerationAnswer), Success);
  EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|1000|N/A|||Abnormal;");
}

TEST_F(PsuFan, AbsentPsuWithoutReadingsIsAppended) {
  EXPECT_EQ(Get({0, 0, 0, 0}), Success);
  EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|N/A|N/A|||Not Present;");
}

TEST_F(PsuFan, OnlyTheText0IsReplaced) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get({0, 0x00, 0x01, 10, 0xFF, 0xFF, 100, 2}), Success);
  EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|256|10|65535|100|Normal;");
}

TEST_F(PsuFan, SecondGenerationLogsReadingsOf0AndNoShortenedAnswer) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0xa5 data=0x1 ", kSecondGenerationAnswer) +
          std::vector<Line>{{4, "PSU:PSU1,Speed-A:10000,Pat-A:50,Speed-B:0,Pat-B:0,Status:Normal"}},
      [&] {
        EXPECT_EQ(Get(kSecondGenerationAnswer), Success);
        EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|10000|50|N/A|N/A|Normal;");
      });
}

TEST_F(PsuFan, FirstGenerationLogsReadingsOf0) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa5 data=0x1 ", kFirstGenerationAnswer) +
                  std::vector<Line>{{4, "PSU:PSU1,Speed:1000,Pat:0,Status:Abnormal"}},
              [&] { EXPECT_EQ(Get(kFirstGenerationAnswer), Success); });
}

TEST_F(PsuFan, SkippedSlotsAreLoggedInTheWordsOfTheirGeneration) {
  inventory.psuSlotCount = 3;
  const Bytes good = {1, 0, 2, 2};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa5 data=0x1 ", {1, 0, 2}) +
                  std::vector<Line>{{1, "Get smm chassis power cap failed with error code:0"}} +
                  ExchangeLines("FN=0x32 cmd=0xa5 data=0x2 ", good) +
                  std::vector<Line>{{1, "Get smm chassis power cap failed with error code:193"}} +
                  ExchangeLines("FN=0x32 cmd=0xa5 data=0x3 ", good) +
                  std::vector<Line>{{4, "PSU:PSU3,Speed:1,Pat:2,Status:Normal"}},
              [&] {
                Reset();
                Expect(1, {1, 0, 2});
                Expect(2, good, 0xC1);
                Expect(3, good);
                EXPECT_EQ(inventory.GetPSUFanSpeed(out), Success);
                EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU3|1|2|||Normal;");
              });
}

TEST_F(PsuFan, SkippedSecondGenerationSlotIsLoggedAsSmm2) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes sevenBytes = {0xAA, 1, 0, 2, 3, 0, 4};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa5 data=0x1 ", sevenBytes) +
                  std::vector<Line>{{1, "Get smm2 chassis power cap failed with error code:0"}},
              [&] { EXPECT_EQ(Get(sevenBytes), Success); });
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa5 data=0x1 ", kSecondGenerationAnswer) +
                  std::vector<Line>{{1, "Get smm2 chassis power cap failed with error code:255"}},
              [&] { EXPECT_EQ(Get(kSecondGenerationAnswer, 0xFF), Success); });
}

TEST_F(PsuFan, RecordIsAppendedBehindItsLine) {
  for (const int smmType : {0, 1}) {
    inventory.smmType = static_cast<SMMIype>(smmType);
    std::string seen;
    platform.whileWritten = [&](const Line&) { seen = Output(); };
    EXPECT_EQ(Get({0x10, 0x27, 0x32, 0x02, 0x10, 0x27, 0x32, 0x02}), Success);
    EXPECT_EQ(platform.lines.back().text.substr(0, 9), "PSU:PSU1,");
    EXPECT_EQ(seen, kAsPassed) << "SMM type " << smmType;
  }
}

TEST_F(PsuFan, StatusOfTheFirstExchangeIsHandedOn) {
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetPSUFanSpeed(out); });
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(PsuFan, ConnectionThatFailsAtALaterSlotKeepsTheEarlierRecords) {
  inventory.psuSlotCount = 3;
  platform.logThreshold = 3;
  Expect(1, kFirstGenerationAnswer);
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(inventory.GetPSUFanSpeed(out), NotConnected);
  EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|1000|N/A|||Abnormal;");
  EXPECT_EQ(platform.lines, (std::vector<Line>{{1, "connect failed with error:5"}}));
}

TEST_F(PsuFan, ConnectionKindThatIsRefusedAtALaterSlotKeepsTheEarlierRecords) {
  inventory.psuSlotCount = 3;
  platform.logThreshold = 3;
  Expect(1, kFirstGenerationAnswer);
  platform.script.back().onRequest = [this](Double::Exchange&) { inventory.connectionKind = 3; };
  EXPECT_EQ(inventory.GetPSUFanSpeed(out), ConnectionKindNotAdmitted);
  EXPECT_EQ(Output(), std::string(kAsPassed) + "PSU1|1000|N/A|||Abnormal;");
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(PsuFan, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  inventory.smmType = SMM_SECOND_GENERATION;
  inventory.psuSlotCount = 10;
  for (std::uint8_t slot = 1; slot <= 10; ++slot) {
    Expect(slot, {0xAA, 0x10, 0x27, 0x32, 0xE8, 0x03, 0xFF, 0x02});
  }
  EXPECT_EQ(inventory.GetPSUFanSpeed(out), Success);
  EXPECT_EQ(out.back().name, "PSU10");
  EXPECT_EQ(out.back().speedA, "10000");
  EXPECT_EQ(out.back().patB, "255");
  EXPECT_EQ(platform.lines.back(),
            (Line{4, "PSU:PSU10,Speed-A:10000,Pat-A:50,Speed-B:1000,Pat-B:255,Status:Normal"}));
  EXPECT_EQ(Get({}, 0xC1), Success);
  EXPECT_EQ(platform.lines.back(),
            (Line{1, "Get smm2 chassis power cap failed with error code:193"}));
}

TEST(PsuFanDecoder, EveryPatValueIsReadAsItIs) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const auto byte = static_cast<std::uint8_t>(value);
    const PSUFanSpeed fans = DecodeSecondGenerationFans("PSU1", {9, 9, 9, byte, 9, 9, byte, 9});
    EXPECT_EQ(fans.patA, std::to_string(value));
    EXPECT_EQ(fans.patB, std::to_string(value));
    EXPECT_EQ(DecodeFirstGenerationFan("PSU1", {9, 9, byte, 9}).patA, std::to_string(value));
  }
}

}  // namespace
}  // namespace Tavrin
