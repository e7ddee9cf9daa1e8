#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Line;
using ::testing::ElementsAre;

class TrimSmm2Response : public Double::InventoryTest {
 protected:
  bool HasTrimLines() const {
    return std::count(platform.lines.begin(), platform.lines.end(), Line{4, "it is smm2..."}) != 0;
  }

  std::string text = "as passed";
};

TEST_F(TrimSmm2Response, FirstGenerationAnswersAreDecodedAsReceivedWithoutRewriteLines) {
  inventory.smmType = SMM_FIRST_GENERATION;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {'A', 'B', 'C', 'D'});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text, "ABCD");
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x0 "},
                          Line{4, "Response=A B C D "}, Line{4, "Response=0x41 0x42 0x43 0x44 "}));
}

TEST_F(TrimSmm2Response, UnknownSmmTypeFollowsTheFirstGeneration) {
  inventory.smmType = static_cast<SMMIype>(7);
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {'A', 'B', 'C', 'D'});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text, "ABCD");
}

TEST_F(TrimSmm2Response, SecondGenerationAnswerLosesItsFirstTwoBytesAndIsLoggedAnew) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {0x12, 0x00, 'A', 'B', 'C', 'D'});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text, "ABCD");
  EXPECT_THAT(
      platform.lines,
      ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x0 "},
                  Line{4, std::string("Response=\x12 \0 A B C D ", 21)},
                  Line{4, "Response=0x12 0x0 0x41 0x42 0x43 0x44 "}, Line{4, "it is smm2..."},
                  Line{4, "New response=A B C D "}, Line{4, "New response=0x41 0x42 0x43 0x44 "}));
}

TEST_F(TrimSmm2Response, AnswerOfExactlyTwoBytesBecomesEmptyAndIsRejected) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.logThreshold = 4;
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x12, 0x00});
  EXPECT_EQ(inventory.GetSmmSN(text), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get smm sn failed with error code:0"}));
  EXPECT_EQ(platform.lines[platform.lines.size() - 2], (Line{4, "New response="}));
}

TEST_F(TrimSmm2Response, AnswerShorterThanTheBytesToRemoveRaisesBadAllocAfterTheFirstLine) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const std::vector<Bytes> answers = {{}, {0x12}};
  for (const Bytes& answer : answers) {
    platform.Expect(0x32, 0xB0, {0x05, 0x00}, answer);
    EXPECT_THROW(inventory.GetSmmMT(text), std::bad_alloc) << answer.size() << " bytes";
    EXPECT_EQ(platform.lines.back(), (Line{4, "it is smm2..."})) << answer.size() << " bytes";
    platform.Expect(0x32, 0xB0, {0x05, 0x01}, answer, 0xC1);
    EXPECT_THROW(inventory.GetSmmSN(text), std::bad_alloc) << answer.size() << " bytes";
    EXPECT_EQ(platform.lines.back(), (Line{4, "it is smm2..."})) << answer.size() << " bytes";
  }
  EXPECT_EQ(text, "as passed");
}

TEST_F(TrimSmm2Response, AnswerOf300BytesIsShortenedAndRenderedInFull) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer(300, 'n');
  const Bytes shortened(298, 'n');
  platform.Expect(0x32, 0xB0, {0x05, 0x0B}, answer);
  EXPECT_EQ(inventory.GetSmmName(text), StatusCode::Success);
  EXPECT_EQ(text, std::string(298, 'n'));
  EXPECT_EQ(platform.lines, Double::ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0xb ", answer) +
                                Double::TrimLines(shortened));
}

TEST_F(TrimSmm2Response, BytesAreRemovedWhateverTheCompletionCode) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {0x12, 0x00, 'A'}, 0xC1);
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::UnusableAnswer);
  EXPECT_EQ(platform.lines[platform.lines.size() - 2], (Line{4, "New response=0x41 "}));
}

TEST_F(TrimSmm2Response, EachQueryThatTrimsUnconditionallyRaisesBadAllocAfterTheFirstLine) {
  inventory.smmType = SMM_SECOND_GENERATION;
  struct Row {
    const char* operation;
    std::uint8_t command;
    Bytes data;
    Bytes answer;
  };
  for (const Row& row : std::vector<Row>{{"GetSmmMT", 0xB0, {0x05, 0x00}, {0x12}},
                                         {"GetSmmSN", 0xB0, {0x05, 0x01}, {0x12}},
                                         {"GetSmmVersion", 0xA8, {}, {}},
                                         {"GetSmmName", 0xB0, {0x05, 0x0B}, {0x12}},
                                         {"GetChassisPowerConsumption", 0x98, {0x05}, {}},
                                         {"GetChassisPowerCap", 0x9D, {0x05}, {}}}) {
    const auto& operation = Double::OperationNamed<Double::Implementation>(row.operation);
    Double::Output output = operation.fresh;
    for (const std::uint8_t completionCode : Bytes{0x00, 0xC1, 0xFF}) {
      platform.Expect(0x32, row.command, row.data, row.answer, completionCode);
      try {
        operation.call(inventory, 0, output);
        FAIL() << row.operation;
      } catch (const std::bad_alloc& error) {
        EXPECT_TRUE(typeid(error) == typeid(std::bad_alloc)) << error.what();
      }
      EXPECT_EQ(platform.lines.back(), (Line{4, "it is smm2..."}));
    }
  }
}

TEST_F(TrimSmm2Response, NodeStatusIsShortenedAtFiveBytesAlone) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x80, 0x20, 0x40, 0x03, 0x04, 0x05};
  struct Row {
    std::ptrdiff_t length;
    int status;
    std::string powerState;
    bool isShortened;
  };
  for (const Row& row : std::vector<Row>{{4, StatusCode::Success, "Power ON", false},
                                         {5, StatusCode::Success, "No Permission", true},
                                         {6, StatusCode::UnusableAnswer, "", false}}) {
    platform.ForgetWhatHappened();
    platform.Expect(0x32, 0xA7, {0x01}, Bytes(answer.begin(), answer.begin() + row.length));
    NodeStatus node;
    EXPECT_EQ(inventory.GetNodeStatus(1, node), row.status);
    EXPECT_EQ(node.powerState, row.powerState);
    EXPECT_EQ(HasTrimLines(), row.isShortened) << row.length << " bytes";
  }
}

TEST_F(TrimSmm2Response, NodePowerIsShortenedFromSevenBytesOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x01, 0x00, 0x02, 0x00, 0x03, 0x00, 0x04, 0x00};
  struct Row {
    std::ptrdiff_t length;
    std::string minPower;
    bool isShortened;
  };
  for (const Row& row : std::vector<Row>{{6, "1", false}, {7, "512", true}, {8, "512", true}}) {
    platform.ForgetWhatHappened();
    platform.Expect(0x32, 0x98, {0x01}, Bytes(answer.begin(), answer.begin() + row.length));
    ChassisPowerCon power;
    EXPECT_EQ(inventory.GetNodePowerConsumption(1, power), StatusCode::Success);
    EXPECT_EQ(power.minPower, row.minPower);
    EXPECT_EQ(HasTrimLines(), row.isShortened) << row.length << " bytes";
  }
}

TEST_F(TrimSmm2Response, NodeAnswersWithACompletionCodeAreNotShortened) {
  inventory.smmType = SMM_SECOND_GENERATION;
  NodeStatus node;
  platform.Expect(0x32, 0xA7, {0x01}, Bytes(5, 0x01), 0xC1);
  EXPECT_EQ(inventory.GetNodeStatus(1, node), StatusCode::UnusableAnswer);
  ChassisPowerCon power;
  platform.Expect(0x32, 0x98, {0x01}, Bytes(7, 0x01), 0xC1);
  EXPECT_EQ(inventory.GetNodePowerConsumption(1, power), StatusCode::UnusableAnswer);
  EXPECT_FALSE(HasTrimLines());
}

TEST_F(TrimSmm2Response, LinesOfDifferentPlacesCarryDifferentNumbers) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x12, 0x00, '-', '-', '-', '-'};
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, answer);
  inventory.GetSmmMT(text);
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, answer, 0xC1);
  inventory.GetSmmSN(text);
  std::vector<unsigned int> numbers;
  for (const Line& line : platform.lines) {
    numbers.push_back(line.number);
  }
  ASSERT_EQ(numbers.size(), 14U);
  const std::set<unsigned int> places(numbers.begin(), numbers.end());
  EXPECT_EQ(places.size(), 8U) << "exchange and trimming write three lines each, both times the "
                                  "same, and each query one of its own";
  EXPECT_THAT(std::vector<unsigned int>(numbers.begin() + 7, numbers.begin() + 13),
              ::testing::ElementsAreArray(numbers.begin(), numbers.begin() + 6));
  EXPECT_NE(numbers[6], numbers[13]);
}

TEST_F(TrimSmm2Response, BytesAreRemovedWithoutALineBelowThreshold4) {
  inventory.smmType = SMM_SECOND_GENERATION;
  for (const unsigned int threshold : {0U, 1U, 2U, 3U}) {
    platform.logThreshold = threshold;
    platform.Expect(0x32, 0xB0, {0x05, 0x00}, {0x12, 0x00, 'A', 'B', 'C', 'D'});
    EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
    EXPECT_EQ(text, "ABCD");
  }
  EXPECT_THAT(platform.lines, ::testing::IsEmpty());
}

}  // namespace
}  // namespace Tavrin
