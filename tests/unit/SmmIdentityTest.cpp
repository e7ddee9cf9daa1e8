#include "module/smm/smm_inventory/impl/SmmIdentity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
using Double::Outcome;
using Double::TrimLines;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Bytes AsBytes(const std::string& text) { return {text.begin(), text.end()}; }

class MachineType : public Double::InventoryTest {
 protected:
  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    platform.Expect(0x32, 0xB0, {0x05, 0x00}, response, completionCode);
    return inventory.GetSmmMT(text);
  }

  std::string text = "as passed";
};

class SerialNumber : public Double::InventoryTest {
 protected:
  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    platform.Expect(0x32, 0xB0, {0x05, 0x01}, response, completionCode);
    return inventory.GetSmmSN(text);
  }

  std::string text = "as passed";
};

TEST_F(MachineType, FirstFourBytesAreTakenAndTheRestIgnored) {
  EXPECT_EQ(Get({0x37, 0x58, 0x30, 0x36, 0x41, 0x00, 0xFF}), StatusCode::Success);
  EXPECT_EQ(text, "7X06");
}

TEST_F(MachineType, FourBytesAreEnough) {
  EXPECT_EQ(Get(AsBytes("Ab9Z")), StatusCode::Success);
  EXPECT_EQ(text, "Ab9Z");
}

TEST_F(MachineType, LowerCaseIsAcceptedAndKept) {
  EXPECT_EQ(Get({0x37, 0x78, 0x30, 0x36}), StatusCode::Success);
  EXPECT_EQ(text, "7x06");
}

TEST_F(MachineType, HyphenOrBlankReturns4WithTheWarningAndLeavesTheText) {
  platform.logThreshold = 2;
  for (const std::string answer :
       {"-X06", "7-06", "7X-6", "7X0-", " X06", "7 06", "7X 6", "7X0 "}) {
    platform.ForgetWhatHappened();
    EXPECT_EQ(Get(AsBytes(answer)), StatusCode::NoUsableResult) << answer;
    EXPECT_EQ(text, "as passed") << answer;
    EXPECT_THAT(platform.lines, ElementsAre(Line{2, "[WARN]: SMM machine type is empty"}));
  }
}

TEST_F(MachineType, ExactlyAsciiLettersAndDigitsAreAcceptedAtEachPosition) {
  const std::string accepted = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  for (std::size_t position = 0; position < 4; ++position) {
    for (unsigned int value = 0; value <= 0xFF; ++value) {
      Bytes answer = AsBytes("7X06");
      answer[position] = static_cast<std::uint8_t>(value);
      const bool isAccepted = accepted.find(static_cast<char>(value)) != std::string::npos;
      EXPECT_EQ(Get(answer), isAccepted ? StatusCode::Success : StatusCode::NoUsableResult)
          << "byte " << value << " at " << position;
    }
  }
}

TEST_F(MachineType, ThreeBytesReturn3AndLogCode0) {
  platform.logThreshold = 1;
  EXPECT_EQ(Get(AsBytes("7X0")), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "Get smm mt failed with error code:0"}));
}

TEST_F(MachineType, CompletionCodeOtherThan0Returns3AndLogsItInDecimal) {
  platform.logThreshold = 1;
  EXPECT_EQ(Get(AsBytes("7X06"), 0xC1), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "Get smm mt failed with error code:193"}));
}

TEST_F(MachineType, EveryShortAnswerLeavesTheText) {
  for (const std::uint8_t completionCode : Bytes{0x00, 0xC1, 0xFF}) {
    for (std::size_t length = 0; length < 4; ++length) {
      EXPECT_EQ(Get(Bytes(length, 'A'), completionCode), StatusCode::UnusableAnswer);
      EXPECT_EQ(text, "as passed") << "length " << length;
    }
  }
}

TEST_F(MachineType, EveryLengthAndCompletionCodeHasItsOutcome) {
  const Outcome failure = {StatusCode::UnusableAnswer, "as passed"};
  const Outcome badAlloc = {kRaisesBadAlloc, "as passed"};
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 3).Always(failure),
       OfSmmType(0).Lengths(4, 8).WithCode0({StatusCode::Success, "A1b2"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(0, 3).Always(failure),
       OfSmmType(7).Lengths(4, 8).WithCode0({StatusCode::Success, "A1b2"}).WithOtherCodes(failure),
       OfSmmType(1).Lengths(0, 1).Always(badAlloc), OfSmmType(1).Lengths(2, 5).Always(failure),
       OfSmmType(1).Lengths(6, 8).WithCode0({StatusCode::Success, "b2C3"}).WithOtherCodes(failure)},
      {'A', '1', 'b', '2', 'C', '3', 'd', '4'},
      [this](const Bytes& answer, std::uint8_t code) {
        text = "as passed";
        return Get(answer, code);
      },
      [this] { return text; });
}

TEST_F(MachineType, SecondGenerationPositionsCountBehindTheFirstTwoBytes) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get({'-', '-', '7', 'X', '0', '6'}), StatusCode::Success);
  EXPECT_EQ(text, "7X06");
}

TEST_F(MachineType, SecondGenerationAnswerOfFiveBytesIsTooShort) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get({'A', 'B', '7', 'X', '0'}), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
}

TEST_F(MachineType, SuccessHasNoLineOfItsOwn) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x0 ", AsBytes("7X06")),
              [&] { EXPECT_EQ(Get(AsBytes("7X06")), StatusCode::Success); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x0 ", AsBytes("AB7X06")) +
                  TrimLines(AsBytes("7X06")),
              [&] { EXPECT_EQ(Get(AsBytes("AB7X06")), StatusCode::Success); });
}

TEST_F(MachineType, FailureIsLoggedWithTheCompletionCode) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x0 ", {}) +
                  std::vector<Line>{{1, "Get smm mt failed with error code:0"}},
              [&] { EXPECT_EQ(Get({}), StatusCode::UnusableAnswer); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x0 ", AsBytes("AB7X06")) +
                  TrimLines(AsBytes("7X06")) +
                  std::vector<Line>{{1, "Get smm mt failed with error code:193"}},
              [&] { EXPECT_EQ(Get(AsBytes("AB7X06"), 0xC1), StatusCode::UnusableAnswer); });
}

TEST_F(MachineType, HyphenIsLoggedAsAWarning) {
  const std::vector<Line> warning = {{2, "[WARN]: SMM machine type is empty"}};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x0 ", AsBytes("7X0-")) + warning,
              [&] { EXPECT_EQ(Get(AsBytes("7X0-")), StatusCode::NoUsableResult); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x0 ", AsBytes("AB7X0-")) +
                  TrimLines(AsBytes("7X0-")) + warning,
              [&] { EXPECT_EQ(Get(AsBytes("AB7X0-")), StatusCode::NoUsableResult); });
}

TEST_F(MachineType, StatusOfTheExchangeIsHandedOnWithoutALine) {
  inventory.connectionKind = 3;
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_THAT(platform.lines, IsEmpty());

  inventory.connectionKind = 1;
  platform.ExpectConnectFailures({3, 3, 3});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::NotConnected);
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:3"}));
  EXPECT_EQ(text, "as passed");
}

TEST_F(MachineType, UnconnectedSecondGenerationIsNotTrimmed) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::NotConnected);
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:5"}));
}

TEST_F(MachineType, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({}, 0xC1), StatusCode::UnusableAnswer);
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get smm mt failed with error code:193"}));
}

TEST_F(SerialNumber, OuterBlanksAndWhatFollowsTheRunAreCutOff) {
  EXPECT_EQ(Get({' ', ' ', 'J', '3', '0', '0', 'T', 'A', 'V', '1', ' ', ' ', 0, 0, 'Z'}),
            StatusCode::Success);
  EXPECT_EQ(text, "J300TAV1");
}

TEST_F(SerialNumber, BlanksInsideAreKept) {
  EXPECT_EQ(Get(AsBytes(" J3 00  T ")), StatusCode::Success);
  EXPECT_EQ(text, "J3 00  T");
}

TEST_F(SerialNumber, RunMayReachTheEndOfTheAnswer) {
  EXPECT_EQ(Get(AsBytes("J300TAV1")), StatusCode::Success);
  EXPECT_EQ(text, "J300TAV1");
}

TEST_F(SerialNumber, UnprintableFirstByteYieldsTheEmptyText) {
  for (const int first : {0x00, 0xFF, 0x1F, 0x7F}) {
    text = "as passed";
    EXPECT_EQ(Get({static_cast<std::uint8_t>(first), 'A', 'B'}), StatusCode::Success);
    EXPECT_EQ(text, "") << "first byte " << first;
  }
}

TEST_F(SerialNumber, BlanksAloneYieldTheEmptyText) {
  EXPECT_EQ(Get(AsBytes("   ")), StatusCode::Success);
  EXPECT_EQ(text, "");
}

TEST_F(SerialNumber, OneByteIsEnough) {
  EXPECT_EQ(Get({'J'}), StatusCode::Success);
  EXPECT_EQ(text, "J");
}

TEST_F(SerialNumber, EmptyAnswerReturns3AndLogsCode0) {
  platform.logThreshold = 1;
  EXPECT_EQ(Get({}), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "Get smm sn failed with error code:0"}));
}

TEST_F(SerialNumber, CompletionCodeOtherThan0Returns3AndLogsItInDecimal) {
  platform.logThreshold = 1;
  EXPECT_EQ(Get(AsBytes("J300TAV1"), 0xFF), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "Get smm sn failed with error code:255"}));
}

TEST_F(SerialNumber, EveryLengthAndCompletionCodeHasItsOutcome) {
  const Outcome failure = {StatusCode::UnusableAnswer, "as passed"};
  const Outcome badAlloc = {kRaisesBadAlloc, "as passed"};
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 0).Always(failure),
       OfSmmType(0).Lengths(1, 1).WithCode0({StatusCode::Success, "J"}).WithOtherCodes(failure),
       OfSmmType(0).Lengths(2, 2).WithCode0({StatusCode::Success, "J3"}).WithOtherCodes(failure),
       OfSmmType(0).Lengths(3, 3).WithCode0({StatusCode::Success, "J30"}).WithOtherCodes(failure),
       OfSmmType(0).Lengths(4, 6).WithCode0({StatusCode::Success, "J30T"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(0, 0).Always(failure),
       OfSmmType(7).Lengths(1, 1).WithCode0({StatusCode::Success, "J"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(2, 2).WithCode0({StatusCode::Success, "J3"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(3, 3).WithCode0({StatusCode::Success, "J30"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(4, 6).WithCode0({StatusCode::Success, "J30T"}).WithOtherCodes(failure),
       OfSmmType(1).Lengths(0, 1).Always(badAlloc), OfSmmType(1).Lengths(2, 2).Always(failure),
       OfSmmType(1).Lengths(3, 3).WithCode0({StatusCode::Success, "0"}).WithOtherCodes(failure),
       OfSmmType(1).Lengths(4, 6).WithCode0({StatusCode::Success, "0T"}).WithOtherCodes(failure)},
      {'J', '3', '0', 'T', 0x00, 'Z'},
      [this](const Bytes& answer, std::uint8_t code) {
        text = "as passed";
        return Get(answer, code);
      },
      [this] { return text; });
}

TEST_F(SerialNumber, SecondGenerationPositionsCountBehindTheFirstTwoBytes) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get({'A', 'B', 'J', '3', 0x00, 'Z'}), StatusCode::Success);
  EXPECT_EQ(text, "J3");
}

TEST_F(SerialNumber, SuccessHasNoLineOfItsOwn) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x1 ", AsBytes("7X06")),
              [&] { EXPECT_EQ(Get(AsBytes("7X06")), StatusCode::Success); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x1 ", AsBytes("AB7X06")) +
                  TrimLines(AsBytes("7X06")),
              [&] { EXPECT_EQ(Get(AsBytes("AB7X06")), StatusCode::Success); });
}

TEST_F(SerialNumber, FailureIsLoggedWithTheCompletionCode) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x1 ", {}) +
                  std::vector<Line>{{1, "Get smm sn failed with error code:0"}},
              [&] { EXPECT_EQ(Get({}), StatusCode::UnusableAnswer); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x1 ", AsBytes("AB7X06")) +
                  TrimLines(AsBytes("7X06")) +
                  std::vector<Line>{{1, "Get smm sn failed with error code:193"}},
              [&] { EXPECT_EQ(Get(AsBytes("AB7X06"), 0xC1), StatusCode::UnusableAnswer); });
}

TEST_F(SerialNumber, StatusOfTheExchangeIsHandedOnWithoutALine) {
  inventory.connectionKind = 0;
  EXPECT_EQ(inventory.GetSmmSN(text), StatusCode::ConnectionKindNotAdmitted);
  EXPECT_THAT(platform.lines, IsEmpty());

  inventory.connectionKind = 7;
  platform.ExpectConnectFailures({8});
  EXPECT_EQ(inventory.GetSmmSN(text), StatusCode::NotConnected);
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:8"}));
  EXPECT_EQ(text, "as passed");
}

TEST_F(SerialNumber, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({}, 0xC1), StatusCode::UnusableAnswer);
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get smm sn failed with error code:193"}));
}

class FirmwareVersion : public Double::InventoryTest {
 protected:
  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    text = "as passed";
    platform.Expect(0x32, 0xA8, {}, response, completionCode);
    return inventory.GetSmmVersion(text);
  }

  std::string text = "as passed";
};

class Name : public Double::InventoryTest {
 protected:
  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    text = "as passed";
    platform.Expect(0x32, 0xB0, {0x05, 0x0B}, response, completionCode);
    return inventory.GetSmmName(text);
  }

  std::string text = "as passed";
};

TEST_F(FirmwareVersion, EveryLengthAndCompletionCodeHasItsOutcome) {
  const Outcome failure = {StatusCode::UnusableAnswer, "as passed"};
  const Outcome badAlloc = {kRaisesBadAlloc, "as passed"};
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 5).Always(failure),
       OfSmmType(0)
           .Lengths(6, 6)
           .WithCode0({StatusCode::Success, "E-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(0)
           .Lengths(7, 7)
           .WithCode0({StatusCode::Success, "EF-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(0)
           .Lengths(8, 8)
           .WithCode0({StatusCode::Success, "EFG-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(0)
           .Lengths(9, 9)
           .WithCode0({StatusCode::Success, "EFGH-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(7).Lengths(0, 5).Always(failure),
       OfSmmType(7)
           .Lengths(6, 6)
           .WithCode0({StatusCode::Success, "E-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(7)
           .Lengths(7, 7)
           .WithCode0({StatusCode::Success, "EF-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(7)
           .Lengths(8, 8)
           .WithCode0({StatusCode::Success, "EFG-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(7)
           .Lengths(9, 9)
           .WithCode0({StatusCode::Success, "EFGH-1a.2b"})
           .WithOtherCodes(failure),
       OfSmmType(1).Lengths(0, 0).Always(badAlloc), OfSmmType(1).Lengths(1, 6).Always(failure),
       OfSmmType(1)
           .Lengths(7, 7)
           .WithCode0({StatusCode::Success, "F-2b.42"})
           .WithOtherCodes(failure),
       OfSmmType(1)
           .Lengths(8, 8)
           .WithCode0({StatusCode::Success, "FG-2b.42"})
           .WithOtherCodes(failure),
       OfSmmType(1)
           .Lengths(9, 9)
           .WithCode0({StatusCode::Success, "FGH-2b.42"})
           .WithOtherCodes(failure)},
      {0x1A, 0x2B, 'B', 'C', 'D', 'E', 'F', 'G', 'H'},
      [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return text; });
}

TEST_F(FirmwareVersion, BuildNameEndsBeforeTheFirstUnprintableByteAndKeepsItsBlanks) {
  EXPECT_EQ(Get({0x01, 0x05, 'x', 'y', 'z', ' ', 'U', ' ', '7', ' ', 0x00, 'Z'}),
            StatusCode::Success);
  EXPECT_EQ(text, " U 7 -1.05");
}

TEST_F(FirmwareVersion, UnprintableByte5LeavesTheBuildNameEmpty) {
  EXPECT_EQ(Get({0x01, 0x05, 'x', 'y', 'z', 0x00}), StatusCode::Success);
  EXPECT_EQ(text, "-1.05");
  EXPECT_EQ(Get({0x01, 0x05, 'x', 'y', 'z', 0xFF, 'A'}), StatusCode::Success);
  EXPECT_EQ(text, "-1.05");
}

TEST_F(FirmwareVersion, RevisionsAreLowerCaseHexadecimalAndOnlyTheMinorIsPadded) {
  struct Row {
    std::uint8_t major;
    std::uint8_t minor;
    std::string expected;
  };
  for (const Row& row : std::vector<Row>{{0x00, 0x00, "A-0.00"},
                                         {0x10, 0x0F, "A-10.0f"},
                                         {0x0F, 0x10, "A-f.10"},
                                         {0x1A, 0x2B, "A-1a.2b"},
                                         {0xFF, 0xFF, "A-ff.ff"}}) {
    EXPECT_EQ(Get({row.major, row.minor, 0, 0, 0, 'A'}), StatusCode::Success);
    EXPECT_EQ(text, row.expected);
  }
}

TEST_F(FirmwareVersion, Bytes2To4NeverReachTheText) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const auto byte = static_cast<std::uint8_t>(value);
    EXPECT_EQ(Get({0x01, 0x02, byte, byte, byte, 'A'}), StatusCode::Success);
    EXPECT_EQ(text, "A-1.02");
  }
}

TEST_F(FirmwareVersion, BuildNameTakesExactlyThePrintableBytes) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const bool isPrintable = value >= 0x20 && value <= 0x7E;
    const std::string run = isPrintable ? std::string{'a', static_cast<char>(value), 'b'} : "a";
    EXPECT_EQ(Get({0x01, 0x02, 0, 0, 0, 'a', static_cast<std::uint8_t>(value), 'b'}),
              StatusCode::Success);
    EXPECT_EQ(text, run + "-1.02") << "byte " << value;
  }
}

TEST_F(FirmwareVersion, SuccessHasNoLineOfItsOwn) {
  const Bytes answer = {0x77, 1, 2, 3, 4, 5, 'A'};
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa8 data=", answer) + TrimLines({1, 2, 3, 4, 5, 'A'}),
              [&] { EXPECT_EQ(Get(answer), StatusCode::Success); });
}

TEST_F(FirmwareVersion, FailureIsLoggedWithTheCompletionCode) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa8 data=", {1, 2, 3, 4, 5}) +
                  std::vector<Line>{{1, "Get smm version failed with error code:0"}},
              [&] {
                EXPECT_EQ(Get({1, 2, 3, 4, 5}), StatusCode::UnusableAnswer);
              });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa8 data=", {0x77}) + TrimLines({}) +
                  std::vector<Line>{{1, "Get smm version failed with error code:193"}},
              [&] { EXPECT_EQ(Get({0x77}, 0xC1), StatusCode::UnusableAnswer); });
}

TEST_F(FirmwareVersion, StatusOfTheExchangeIsHandedOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetSmmVersion(text); });
  EXPECT_EQ(text, "as passed");
}

TEST_F(FirmwareVersion, TextAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({0x12, 0x34, 0, 0, 0, 'A'}), StatusCode::Success);
  EXPECT_EQ(text, "A-12.34");
  EXPECT_EQ(platform.lines.back(), (Line{4, "Response=0x12 0x34 0x0 0x0 0x0 0x41 "}));
  EXPECT_EQ(Get({}, 0xC1), StatusCode::UnusableAnswer);
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get smm version failed with error code:193"}));
}

TEST_F(Name, EveryLengthAndCompletionCodeHasItsOutcome) {
  const Outcome failure = {StatusCode::UnusableAnswer, "as passed"};
  const Outcome badAlloc = {kRaisesBadAlloc, "as passed"};
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 0).Always(failure),
       OfSmmType(0).Lengths(1, 1).WithCode0({StatusCode::Success, "A"}).WithOtherCodes(failure),
       OfSmmType(0).Lengths(2, 2).WithCode0({StatusCode::Success, "AB"}).WithOtherCodes(failure),
       OfSmmType(0).Lengths(3, 3).WithCode0({StatusCode::Success, "ABC"}).WithOtherCodes(failure),
       OfSmmType(0).Lengths(4, 6).WithCode0({StatusCode::Success, "ABCD"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(0, 0).Always(failure),
       OfSmmType(7).Lengths(1, 1).WithCode0({StatusCode::Success, "A"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(2, 2).WithCode0({StatusCode::Success, "AB"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(3, 3).WithCode0({StatusCode::Success, "ABC"}).WithOtherCodes(failure),
       OfSmmType(7).Lengths(4, 6).WithCode0({StatusCode::Success, "ABCD"}).WithOtherCodes(failure),
       OfSmmType(1).Lengths(0, 1).Always(badAlloc), OfSmmType(1).Lengths(2, 2).Always(failure),
       OfSmmType(1).Lengths(3, 3).WithCode0({StatusCode::Success, "C"}).WithOtherCodes(failure),
       OfSmmType(1).Lengths(4, 6).WithCode0({StatusCode::Success, "CD"}).WithOtherCodes(failure)},
      {'A', 'B', 'C', 'D', 0x00, 'E'},
      [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return text; });
}

TEST_F(Name, BlanksInsideAndAtBothEndsAreKept) {
  EXPECT_EQ(Get(AsBytes("  rack 7 ")), StatusCode::Success);
  EXPECT_EQ(text, "  rack 7 ");
}

TEST_F(Name, TakesExactlyThePrintableBytes) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const bool isPrintable = value >= 0x20 && value <= 0x7E;
    EXPECT_EQ(Get({static_cast<std::uint8_t>(value), 'b'}), StatusCode::Success);
    EXPECT_EQ(text, isPrintable ? (std::string{static_cast<char>(value), 'b'}) : "")
        << "byte " << value;
  }
}

TEST_F(Name, UnprintableByteBehindTheLeadingTwoYieldsTheEmptyText) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get({'A', 'B', 0x00, 'C'}), StatusCode::Success);
  EXPECT_EQ(text, "");
}

TEST_F(Name, SuccessHasNoLineOfItsOwn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(
      ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0xb ", AsBytes("ABcd")) + TrimLines(AsBytes("cd")),
      [&] { EXPECT_EQ(Get(AsBytes("ABcd")), StatusCode::Success); });
}

TEST_F(Name, FailureIsLoggedWithTheCompletionCode) {
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0xb ", {}) +
                  std::vector<Line>{{1, "Get smm name failed with error code:0"}},
              [&] { EXPECT_EQ(Get({}), StatusCode::UnusableAnswer); });
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0xb ", AsBytes("ABcd")) +
                  TrimLines(AsBytes("cd")) +
                  std::vector<Line>{{1, "Get smm name failed with error code:255"}},
              [&] { EXPECT_EQ(Get(AsBytes("ABcd"), 0xFF), StatusCode::UnusableAnswer); });
}

TEST_F(Name, StatusOfTheExchangeIsHandedOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetSmmName(text); });
  EXPECT_EQ(text, "as passed");
}

TEST_F(Name, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({}, 0xC1), StatusCode::UnusableAnswer);
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get smm name failed with error code:193"}));
}

TEST(SmmIdentityDecoder, MachineTypeOfFewerThanFourBytesIsEmpty) {
  EXPECT_EQ(DecodeMachineType({'A', 'B', 'C'}), "");
}

}  // namespace
}  // namespace Tavrin
