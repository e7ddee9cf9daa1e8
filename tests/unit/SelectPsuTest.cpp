#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::ExchangeLines;
using Double::Line;
using StatusCode::NoUsableResult;
using StatusCode::Success;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

class SelectPsu : public Double::InventoryTest {
 protected:
  /// Selects PSU 2 of the first generation, which gives this answer so many times.
  int Select(int answers, const Bytes& response, std::uint8_t completionCode = 0) {
    inventory.smmType = SMM_FIRST_GENERATION;
    for (int i = 0; i < answers; ++i) {
      platform.Expect(0x32, 0xF4, {0x00, 0x02}, response, completionCode);
    }
    return inventory.SelectPSUImpl(2);
  }
};

TEST_F(SelectPsu, SelectorTravelsAsGenerationAndPlatformAllow) {
  struct Row {
    int smmType;
    std::int32_t platformId;
    int psu;
    Bytes data;
  };
  for (const Row& row : std::vector<Row>{{0, 254, 0, {0, 0}},       {0, 254, 1, {0, 1}},
                                         {0, 254, 2, {0, 2}},       {0, 254, 3, {0, 3}},
                                         {0, 254, 4, {0, 3}},       {0, 254, 255, {0, 3}},
                                         {0, 254, 256, {0, 3}},     {0, 254, kHighest, {0, 3}},
                                         {0, 254, -1, {0, 0xFF}},   {0, 254, -255, {0, 0x01}},
                                         {0, 254, kLowest, {0, 0}}, {0, 253, 9, {0, 3}},
                                         {7, 253, 9, {0, 3}},       {7, 254, 3, {0, 3}},
                                         {7, 0x55, -2, {0, 0xFE}},  {1, 253, 0, {0, 0}},
                                         {1, 253, 3, {0, 3}},       {1, 253, 9, {0, 9}},
                                         {1, 253, 10, {0}},         {1, 253, kHighest, {0}},
                                         {1, 253, -1, {0, 0xFF}},   {1, 253, kLowest, {0, 0}},
                                         {1, 254, 0, {0, 0}},       {1, 254, 2, {0, 2}},
                                         {1, 254, 3, {0}},          {1, 254, 9, {0}},
                                         {1, 254, -2, {0, 0xFE}},   {1, 0x55, 0, {0}},
                                         {1, 0x55, 2, {0}},         {1, 0x55, -1, {0}},
                                         {1, 252, 1, {0}},          {1, 255, 1, {0}}}) {
    inventory.smmType = static_cast<SMMIype>(row.smmType);
    inventory.smmStatus.platformId = row.platformId;
    platform.Expect(0x32, 0xF4, row.data, {0x11});
    EXPECT_EQ(inventory.SelectPSUImpl(row.psu), Success)
        << "type " << row.smmType << " platform " << row.platformId << " PSU " << row.psu;
  }
  EXPECT_THAT(platform.pauses, IsEmpty());
}

TEST_F(SelectPsu, EveryLengthAndCompletionCodeHasItsOutcomeInBothGenerations) {
  struct Row {
    std::size_t length;
    std::uint8_t completionCode;
    int exchanges;
    std::size_t pauses;
    int status;
  };
  for (const int smmType : {0, 1, 7}) {
    inventory.smmType = static_cast<SMMIype>(smmType);
    for (const Row& row : std::vector<Row>{{0, 0x00, 6, 6, NoUsableResult},
                                           {0, 0xC1, 6, 6, NoUsableResult},
                                           {0, 0xFF, 6, 6, NoUsableResult},
                                           {1, 0x00, 1, 0, Success},
                                           {1, 0xC1, 6, 6, NoUsableResult},
                                           {1, 0xFF, 6, 6, NoUsableResult},
                                           {2, 0x00, 6, 6, Success},
                                           {2, 0xC1, 6, 6, NoUsableResult},
                                           {2, 0xFF, 6, 6, NoUsableResult},
                                           {3, 0x00, 6, 6, Success},
                                           {3, 0xC1, 6, 6, NoUsableResult},
                                           {3, 0xFF, 6, 6, NoUsableResult}}) {
      platform.ForgetWhatHappened();
      for (int i = 0; i < row.exchanges; ++i) {
        platform.Expect(0x32, 0xF4, {0x00, 0x01}, Bytes(row.length, 0x11), row.completionCode);
      }
      EXPECT_EQ(inventory.SelectPSUImpl(1), row.status)
          << "type " << smmType << ", " << row.length << " bytes, code " << int{row.completionCode};
      EXPECT_EQ(platform.pauses, std::vector<unsigned int>(row.pauses, 3U));
    }
  }
}

TEST_F(SelectPsu, AcknowledgementAtALaterAttemptEndsThePauses) {
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {});
  platform.ExpectConnectFailures({5});
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x11}, 0xC1);
  EXPECT_EQ(Select(1, {0x11}), Success);
  EXPECT_THAT(platform.pauses, ElementsAre(3, 3, 3));
}

TEST_F(SelectPsu, AcknowledgementIsLogged) {
  ExpectLines(std::vector<Line>{{3, "Try to get PSU status, start retry 1 time"}} +
                  ExchangeLines("FN=0x32 cmd=0xf4 data=0x0 0x2 ", {0x11}) +
                  std::vector<Line>{{3, "Succeeded select PSU "}},
              [&] { EXPECT_EQ(Select(1, {0x11}), Success); });
}

TEST_F(SelectPsu, EachOfSixAttemptsIsLoggedAndTheVerdict) {
  const std::vector<Line> exchange = ExchangeLines("FN=0x32 cmd=0xf4 data=0x0 0x2 ", {0x11, 0x22});
  ExpectLines(std::vector<Line>{{3, "Try to get PSU status, start retry 1 time"}} + exchange +
                  std::vector<Line>{{3, "Try to get PSU status, start retry 2 times"}} + exchange +
                  std::vector<Line>{{3, "Try to get PSU status, start retry 3 times"}} + exchange +
                  std::vector<Line>{{3, "Try to get PSU status, start retry 4 times"}} + exchange +
                  std::vector<Line>{{3, "Try to get PSU status, start retry 5 times"}} + exchange +
                  std::vector<Line>{{3, "Try to get PSU status, start retry 6 times"}} + exchange +
                  std::vector<Line>{{2, "response is empty or completionCode: \xC1"}},
              [&] {
                EXPECT_EQ(Select(6, {0x11, 0x22}, 0xC1), NoUsableResult);
              });
}

TEST_F(SelectPsu, ThresholdIsTestedAnewForEachLine) {
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {});
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {});
  platform.laterThresholds = {2, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 3};
  EXPECT_EQ(Select(1, {0x11}), Success);
  EXPECT_THAT(platform.laterThresholds, IsEmpty());
  EXPECT_THAT(platform.lines, ElementsAre(Line{3, "Try to get PSU status, start retry 2 times"},
                                          Line{3, "Succeeded select PSU "}));
}

TEST_F(SelectPsu, OneAnswerServesAllAttempts) {
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x11, 0x22});
  for (int attempt = 2; attempt <= 6; ++attempt) {
    platform.Expect(0x32, 0xF4, {0x00, 0x02}, {}, 0xC1);
    platform.script.back().filling = Double::Filling::LeavesAlone;
  }
  EXPECT_EQ(inventory.SelectPSUImpl(2), Success);

  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {}, 0x00);
  platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x11}, 0x00);
  platform.script.back().filling = Double::Filling::Appends;
  EXPECT_EQ(inventory.SelectPSUImpl(2), Success);
}

TEST_F(SelectPsu, SuccessAfterSixAttemptsHasNoLineOfItsOwn) {
  platform.logThreshold = 3;
  EXPECT_EQ(Select(6, {0x11, 0x22}), Success);
  EXPECT_EQ(platform.lines.size(), 6U);
  EXPECT_EQ(platform.lines.back(), (Line{3, "Try to get PSU status, start retry 6 times"}));
}

TEST_F(SelectPsu, CompletionCodeIsLoggedAsTheByteItIs) {
  platform.logThreshold = 2;
  EXPECT_EQ(Select(6, {}, 0x00), NoUsableResult);
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{2, "response is empty or completionCode: " + std::string(1, '\0')}));
  platform.ForgetWhatHappened();
  EXPECT_EQ(Select(6, {}, 0x41), NoUsableResult);
  EXPECT_THAT(platform.lines, ElementsAre(Line{2, "response is empty or completionCode: A"}));
}

TEST_F(SelectPsu, ConnectionKindThatIsNotAdmittedTakesAllAttemptsAndReturns4) {
  platform.logThreshold = 2;
  inventory.connectionKind = 3;
  EXPECT_EQ(inventory.SelectPSUImpl(1), NoUsableResult);
  EXPECT_EQ(platform.pauses, std::vector<unsigned int>(6, 3U));
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{2, "response is empty or completionCode: " + std::string(1, '\0')}));
}

TEST_F(SelectPsu, ConnectionThatNeverOpensTakesAllAttemptsAndReturns4) {
  platform.logThreshold = 2;
  for (int i = 0; i < 6; ++i) {
    platform.ExpectConnectFailures({5});
  }
  EXPECT_EQ(inventory.SelectPSUImpl(1), NoUsableResult);
  EXPECT_EQ(platform.pauses, std::vector<unsigned int>(6, 3U));
  const std::vector<Line> failures(6, Line{1, "connect failed with error:5"});
  const std::vector<Line> verdict = {{2, "response is empty or completionCode: \xFF"}};
  EXPECT_EQ(platform.lines, failures + verdict);
}

TEST_F(SelectPsu, ConnectionThatFailsLastDecidesTheVerdict) {
  for (int i = 0; i < 5; ++i) {
    platform.Expect(0x32, 0xF4, {0x00, 0x01}, {0x11, 0x22});
  }
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(inventory.SelectPSUImpl(1), NoUsableResult);
}

TEST_F(SelectPsu, AnswerBeforeRefusedAttemptsDecidesTheVerdict) {
  platform.Expect(0x32, 0xF4, {0x00, 0x01}, {0x11, 0x22});
  platform.script.back().onRequest = [this](Double::Exchange&) { inventory.connectionKind = 3; };
  EXPECT_EQ(inventory.SelectPSUImpl(1), Success);
  EXPECT_EQ(platform.pauses, std::vector<unsigned int>(6, 3U));
}

TEST_F(SelectPsu, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  platform.Expect(0x32, 0xF4, {0x00, 0xFF}, {0x11});
  EXPECT_EQ(inventory.SelectPSUImpl(-1), Success);
  EXPECT_EQ(platform.lines, (std::vector<Line>{{3, "Try to get PSU status, start retry 1 time"}} +
                             ExchangeLines("FN=0x32 cmd=0xf4 data=0x0 0xff ", {0x11}) +
                             std::vector<Line>{{3, "Succeeded select PSU "}}));
}

}  // namespace
}  // namespace Tavrin
