#include "module/smm/smm_inventory/impl/SmmIdentity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryDouble.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Line;
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

TEST_F(MachineType, SuccessLogsNothingBelowThreshold4) {
  platform.logThreshold = 3;
  EXPECT_EQ(Get(AsBytes("7X06")), StatusCode::Success);
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(MachineType, WarningIsSilentBelowThreshold2) {
  platform.logThreshold = 1;
  EXPECT_EQ(Get(AsBytes("7X0-")), StatusCode::NoUsableResult);
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(MachineType, FailureIsSilentAtThreshold0) {
  platform.logThreshold = 0;
  EXPECT_EQ(Get({}), StatusCode::UnusableAnswer);
  EXPECT_THAT(platform.lines, IsEmpty());
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

TEST_F(SerialNumber, SecondGenerationPositionsCountBehindTheFirstTwoBytes) {
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get({'A', 'B', 'J', '3', 0x00, 'Z'}), StatusCode::Success);
  EXPECT_EQ(text, "J3");
}

TEST_F(SerialNumber, SuccessLogsNothingBelowThreshold4) {
  platform.logThreshold = 3;
  EXPECT_EQ(Get(AsBytes("J300TAV1")), StatusCode::Success);
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(SerialNumber, FailureIsSilentAtThreshold0) {
  platform.logThreshold = 0;
  EXPECT_EQ(Get({}), StatusCode::UnusableAnswer);
  EXPECT_THAT(platform.lines, IsEmpty());
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

TEST(SmmIdentityDecoder, MachineTypeOfFewerThanFourBytesIsEmpty) {
  EXPECT_EQ(DecodeMachineType({'A', 'B', 'C'}), "");
}

}  // namespace
}  // namespace Tavrin
