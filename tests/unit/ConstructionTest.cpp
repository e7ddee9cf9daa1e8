#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Line;
using Double::StatusAnswer;
using Double::TestSettings;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

using Construction = Double::PlatformTest;

const Line kSuccessOn253 = {4, " GetSMMStatus success, platformId =0xfd"};
const Line kDefaultValueWarning = {2, "SMM Type is 0x0use default value"};
const Line kEgsWarning = {2, "checked SMM2 Type is EGS, For EGS, set default value 6"};

Line RefusedWarning(std::uint8_t completionCode) {
  return {
      2, "response is empty or completeCode: " + std::string(1, static_cast<char>(completionCode))};
}

std::vector<Line> StatusExchange(const Bytes& answer) {
  return Double::ExchangeLines("FN=0x32 cmd=0xa8 data=", answer);
}

/// The lines of six attempts to read the status, each of which writes those of its exchange.
std::vector<Line> SixAttempts(const std::vector<Line>& exchange) {
  const std::vector<std::string> times = {"1 time",  "2 times", "3 times",
                                          "4 times", "5 times", "6 times"};
  std::vector<Line> lines;
  for (const std::string& time : times) {
    lines.push_back({3, "Try to get SMM status, retry " + time});
    lines = lines + exchange;
  }
  return lines;
}

TEST_F(Construction, EveryConnectionSettingIsCopied) {
  platform.ExpectStatusReads(1, {0x01});
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(inventory.address, "192.0.2.17");
  EXPECT_EQ(inventory.port, 9623);
  EXPECT_EQ(inventory.userName, "operator-7");
  EXPECT_EQ(inventory.password, "correct horse");
  EXPECT_EQ(inventory.aux16A, 11);
  EXPECT_EQ(inventory.aux16B, 12);
  EXPECT_EQ(inventory.aux32A, -13);
  EXPECT_EQ(inventory.connectionKind, 7);
  EXPECT_EQ(inventory.aux32B, 15);
}

TEST_F(Construction, SmmTypeIsAskedBeforeTheStatusAndReleasedAfterIt) {
  platform.ExpectStatusReads(1, {0x01});
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_THAT(platform.events,
              ElementsAre("SMM information constructed", "SMM type asked", "client constructed",
                          "configuration read", "connect", "send", "disconnect", "client destroyed",
                          "SMM information destroyed"));
}

TEST_F(Construction, SmmInformationIsGivenTheObjectItselfAndFillsItsType) {
  platform.ExpectStatusReads(1, {0x01});
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(platform.settingsOfInformation, &inventory);
  EXPECT_EQ(platform.askedSmmType, &inventory.smmType);
}

TEST_F(Construction, CountsAreStoredBehindTheSuccessLineAndThePlatformIdBeforeIt) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  std::string seen;
  platform.whileWritten = [&](const Line& line) {
    const auto& inventory = static_cast<const SMMInventoryImpl&>(*platform.settingsOfInformation);
    seen = line.text + ", " + std::to_string(inventory.smmStatus.platformId) + '/' +
           std::to_string(inventory.smmStatus.psuSlotCount) + ", " +
           std::to_string(inventory.psuSlotCount) + " slots, " +
           std::to_string(inventory.nodeCount) + " nodes, " + platform.events.back();
  };
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(seen, kSuccessOn253.text + ", 253/9, 2 slots, 4 nodes, pause");
  EXPECT_EQ(inventory.psuSlotCount, 9U);
}

TEST_F(Construction, SmmTypeIsTakenAsReportedWhateverTheResult) {
  for (const int type : {0, 1, 7, -1}) {
    platform = Double::Platform{};
    platform.smmType = type;
    platform.smmTypeResult = 5;
    platform.ExpectStatusReads(1, {0x01});
    const SMMInventoryImpl inventory(TestSettings());
    EXPECT_EQ(static_cast<int>(inventory.smmType), type);
    ExpectScriptPlayed();
  }
}

TEST_F(Construction, SmmWhoseTypeIsNotFoundOutIsOfTheFirstGeneration) {
  platform.smmType = std::nullopt;
  platform.smmTypeResult = 5;
  platform.ExpectStatusReads(1, {0x01});
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(inventory.smmType, SMM_FIRST_GENERATION);
}

TEST_F(Construction, OneByteAnswerEndsTheAttemptsAfterTheFirst) {
  platform.ExpectStatusReads(1, {0xFD});
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(inventory.smmStatus.platformId, 254);
  EXPECT_EQ(inventory.smmStatus.psuSlotCount, 2);
  EXPECT_EQ(inventory.psuSlotCount, 2U);
  EXPECT_EQ(inventory.nodeCount, 4U);
  EXPECT_THAT(platform.pauses, IsEmpty());
  EXPECT_THAT(platform.lines, ElementsAre(Line{3, "Try to get SMM status, retry 1 time"},
                                          Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xa8 data="},
                                          Line{4, "Response=\xFD "}, Line{4, "Response=0xfd "},
                                          Line{3, "Succeeded get SMM Status"}, kDefaultValueWarning,
                                          Line{4, " GetSMMStatus success, platformId =0xfe"}));
}

TEST_F(Construction, FullAnswerOfPlatform253TakesSixAttemptsAndSixPauses) {
  platform.smmType = 1;
  platform.logThreshold = 4;
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(inventory.smmStatus.platformId, 253);
  EXPECT_EQ(inventory.smmStatus.psuSlotCount, 9);
  EXPECT_EQ(inventory.psuSlotCount, 9U);
  EXPECT_EQ(inventory.nodeCount, 12U);
  EXPECT_THAT(platform.pauses, ElementsAre(3, 3, 3, 3, 3, 3));
  EXPECT_EQ(platform.lines.back(), kSuccessOn253);
}

TEST_F(Construction, AnswerIsDecodedButCountsKeepTheirDefaultsWhenTheCompletionCodeIsNotZero) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03), 0xC1);
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(inventory.smmStatus.platformId, 253);
  EXPECT_EQ(inventory.smmStatus.psuSlotCount, 9);
  EXPECT_EQ(inventory.psuSlotCount, 2U);
  EXPECT_EQ(inventory.nodeCount, 4U);
  EXPECT_THAT(platform.pauses, SizeIs(6));
  EXPECT_THAT(platform.lines, Not(Contains(kSuccessOn253)));
}

TEST_F(Construction, ConnectionKindThatAdmitsNoIpmiStillPausesSixTimes) {
  platform.expectedSettings.connectionKind = 3;
  const SMMInventoryImpl inventory(platform.expectedSettings);
  EXPECT_EQ(inventory.psuSlotCount, 2U);
  EXPECT_EQ(inventory.nodeCount, 4U);
  EXPECT_THAT(platform.pauses, ElementsAre(3, 3, 3, 3, 3, 3));
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{3, "Try to get SMM status, retry 1 time"},
                          Line{3, "Try to get SMM status, retry 2 times"},
                          Line{3, "Try to get SMM status, retry 3 times"},
                          Line{3, "Try to get SMM status, retry 4 times"},
                          Line{3, "Try to get SMM status, retry 5 times"},
                          Line{3, "Try to get SMM status, retry 6 times"},
                          Line{2, std::string("response is empty or completeCode: \0", 36)},
                          kDefaultValueWarning));
}

TEST_F(Construction, WholeConversationIsLoggedLineByLine) {
  struct Row {
    Bytes answer;
    std::uint8_t completionCode;
    std::vector<Line> verdict;
  };
  for (const Row& row :
       std::vector<Row>{{StatusAnswer(0xFD, 0x03), 0x00, {kSuccessOn253}},
                        {StatusAnswer(0xFD, 0x04), 0x00, {kEgsWarning, kSuccessOn253}},
                        {StatusAnswer(0xFD, 0x03), 0xC1, {RefusedWarning(0xC1)}}}) {
    ExpectLines(SixAttempts(StatusExchange(row.answer)) + row.verdict, [&] {
      platform.ExpectStatusReads(6, row.answer, row.completionCode);
      const SMMInventoryImpl inventory(TestSettings());
    });
  }
}

TEST_F(Construction, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  const Bytes answer = StatusAnswer(0xFD, 0x04);
  platform.ExpectStatusReads(6, answer);
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(platform.lines,
            (SixAttempts(StatusExchange(answer)) + std::vector<Line>{kEgsWarning, kSuccessOn253}));
}

TEST_F(Construction, ExceptionOfTheTypeQueryReachesTheCallerAndReleasesTheInformation) {
  platform.onEvent = [](const std::string& event) {
    if (event == "SMM type asked") {
      throw std::runtime_error("no type");
    }
  };
  EXPECT_THROW(SMMInventoryImpl{TestSettings()}, std::runtime_error);
  EXPECT_EQ(platform.events.back(), "SMM information destroyed");
}

struct DerivedCounts {
  const char* name;
  Bytes answer;
  std::uint8_t completionCode;
  std::int32_t platformId;
  std::int32_t psuSlotCountOfStatus;
  std::uint64_t psuSlotCount;
  std::uint64_t nodeCount;
};

std::ostream& operator<<(std::ostream& stream, const DerivedCounts& row) {
  return stream << row.name;
}

Bytes LongAnswer(std::uint8_t platformId, std::uint8_t enclosureType) {
  Bytes answer = StatusAnswer(platformId, enclosureType);
  answer.insert(answer.end(), {0xDE, 0xEF});
  return answer;
}

Bytes ShortAnswer(std::size_t length) {
  Bytes answer = StatusAnswer(0xFD, 0x03);
  answer.resize(length);
  return answer;
}

const std::vector<DerivedCounts>& DerivedCountsTable() {
  static const std::vector<DerivedCounts> table = {
      {"TwoBytes", ShortAnswer(2), 0, 254, 2, 2, 4},
      {"ThirteenBytes", ShortAnswer(13), 0, 254, 2, 2, 4},
      {"Empty", {}, 0, 254, 2, 2, 4},
      {"OneByteRefused", ShortAnswer(1), 0xC1, 254, 2, 2, 4},
      {"ThirteenBytesRefused", ShortAnswer(13), 0xFF, 254, 2, 2, 4},
      {"OtherPlatform", StatusAnswer(0xFE, 0x03), 0, 254, 2, 2, 4},
      {"FirstGenerationRevision", StatusAnswer(0x01, 0x04), 0, 254, 2, 2, 4},
      {"Platform253Nine", StatusAnswer(0xFD, 0x03), 0, 253, 9, 9, 12},
      {"Platform253Egs", StatusAnswer(0xFD, 0x04), 0, 253, 6, 6, 12},
      {"Platform253OtherType", StatusAnswer(0xFD, 0x00), 0, 253, 6, 6, 12},
      {"Platform253LongAnswer", LongAnswer(0xFD, 0x03), 0, 253, 9, 9, 12},
      {"OtherPlatformRefused", StatusAnswer(0xFE, 0x03), 0xC1, 254, 2, 2, 4},
      {"Platform253NineRefused", StatusAnswer(0xFD, 0x03), 0xFF, 253, 9, 2, 4},
      {"Platform253EgsRefused", StatusAnswer(0xFD, 0x04), 0xC1, 253, 6, 2, 4},
  };
  return table;
}

class DerivedCountsTest : public Double::PlatformTest,
                          public ::testing::WithParamInterface<DerivedCounts> {};

TEST_P(DerivedCountsTest, FollowFromTheLastStatusAnswer) {
  platform.ExpectStatusReads(5, ShortAnswer(7), 0xC3);
  platform.ExpectStatusReads(1, GetParam().answer, GetParam().completionCode);
  const SMMInventoryImpl inventory(TestSettings());
  EXPECT_EQ(inventory.smmStatus.platformId, GetParam().platformId);
  EXPECT_EQ(inventory.smmStatus.psuSlotCount, GetParam().psuSlotCountOfStatus);
  EXPECT_EQ(inventory.psuSlotCount, GetParam().psuSlotCount);
  EXPECT_EQ(inventory.nodeCount, GetParam().nodeCount);
}

INSTANTIATE_TEST_SUITE_P(Construction, DerivedCountsTest, ::testing::ValuesIn(DerivedCountsTable()),
                         [](const auto& row) { return std::string(row.param.name); });

class StatusRead : public Double::InventoryTest {
 protected:
  SMMStatus status = Sentinel();

  static SMMStatus Sentinel() {
    SMMStatus sentinel;
    sentinel.platformId = -71;
    sentinel.psuSlotCount = -72;
    return sentinel;
  }
};

TEST_F(StatusRead, OneByteAnswerReturnsSuccessAndLeavesTheRecord) {
  platform.ExpectStatusReads(1, {0xFD});
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(status.platformId, -71);
  EXPECT_EQ(status.psuSlotCount, -72);
}

TEST_F(StatusRead, OneByteAnswerAtALaterAttemptEndsTheAttemptsThere) {
  platform.logThreshold = 3;
  platform.ExpectStatusReads(1, StatusAnswer(0xFD, 0x03));
  platform.ExpectStatusReads(1, {0xFD}, 0xC0);
  platform.ExpectStatusReads(1, {0xFD});
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_THAT(platform.pauses, ElementsAre(3, 3));
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{3, "Try to get SMM status, retry 1 time"},
                          Line{3, "Try to get SMM status, retry 2 times"},
                          Line{3, "Try to get SMM status, retry 3 times"},
                          Line{3, "Succeeded get SMM Status"}, kDefaultValueWarning));
}

TEST_F(StatusRead, LastAnswerIsTheOneThatIsDecoded) {
  platform.ExpectStatusReads(5, StatusAnswer(0xFD, 0x03));
  platform.ExpectStatusReads(1, StatusAnswer(0xFE, 0x03));
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(status.platformId, 254);
  EXPECT_EQ(status.psuSlotCount, 2);
}

TEST_F(StatusRead, ObjectKeepsWhatConstructionDerived) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  inventory.GetSMMStatusImp(status);
  EXPECT_EQ(inventory.smmStatus.platformId, 254);
  EXPECT_EQ(inventory.smmStatus.psuSlotCount, 2);
  EXPECT_EQ(inventory.psuSlotCount, 2U);
  EXPECT_EQ(inventory.nodeCount, 4U);
}

TEST_F(StatusRead, RefusedFullAnswerIsDecodedAndReturns4) {
  platform.logThreshold = 2;
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x04), 0xC1);
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::NoUsableResult);
  EXPECT_EQ(status.platformId, 253);
  EXPECT_EQ(status.psuSlotCount, 6);
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{2, "response is empty or completeCode: \xC1"}, kEgsWarning));
}

TEST_F(StatusRead, EgsLineIsWrittenForTheEgsTypeAlone) {
  platform.logThreshold = 2;
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x04));
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x05));
  platform.ExpectStatusReads(6, StatusAnswer(0xFE, 0x04));
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_THAT(platform.lines, ElementsAre(kEgsWarning));
}

TEST_F(StatusRead, PlatformIdIsStoredBeforeTheEgsLineAndTheSlotCountBehindIt) {
  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x04));
  SMMStatus seen;
  platform.whileWritten = [&](const Line&) { seen = status; };
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(platform.lines.back(), kEgsWarning);
  EXPECT_EQ(seen.platformId, 253);
  EXPECT_EQ(seen.psuSlotCount, -72);
  EXPECT_EQ(status.psuSlotCount, 6);
}

TEST_F(StatusRead, OneAnswerServesAllAttempts) {
  const Bytes answer = {0xFD, 0x12, 0x03};
  platform.ExpectStatusReads(6, answer);
  for (Double::Exchange& exchange : platform.script) {
    exchange.filling = Double::Filling::Appends;
  }
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(status.platformId, 253);
  EXPECT_EQ(status.psuSlotCount, 6);

  platform.ExpectStatusReads(6, StatusAnswer(0xFD, 0x03));
  for (std::size_t attempt = 1; attempt < 6; ++attempt) {
    platform.script[platform.script.size() - attempt].filling = Double::Filling::LeavesAlone;
  }
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(status.psuSlotCount, 9);
}

TEST_F(StatusRead, ThresholdIsTestedAnewForEachLine) {
  platform.ExpectStatusReads(3, {0x01, 0x02});
  platform.ExpectStatusReads(1, {0x01});
  platform.laterThresholds = {3, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 3, 1};
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_THAT(platform.laterThresholds, IsEmpty());
  EXPECT_THAT(platform.lines, ElementsAre(Line{3, "Try to get SMM status, retry 1 time"},
                                          Line{3, "Try to get SMM status, retry 3 times"},
                                          Line{3, "Succeeded get SMM Status"}));
}

TEST_F(StatusRead, SmmTypeOf1WithAShortAnswerIsNamedInTheDefaultLine) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.logThreshold = 2;
  platform.ExpectStatusReads(6, {0xFD, 0x12});
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_THAT(platform.lines, ElementsAre(Line{2, "SMM Type is 0x1use default value"}));
}

TEST_F(StatusRead, UnknownSmmTypeIsWrittenInHexadecimal) {
  inventory.smmType = static_cast<SMMIype>(-1);
  platform.logThreshold = 2;
  platform.ExpectStatusReads(6, {0xFD, 0x12});
  inventory.GetSMMStatusImp(status);
  EXPECT_THAT(platform.lines, ElementsAre(Line{2, "SMM Type is 0xffffffffuse default value"}));
}

TEST_F(StatusRead, LinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  inventory.smmType = static_cast<SMMIype>(-1);
  platform.ExpectStatusReads(6, {0xFD, 0x12});
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(platform.lines, (SixAttempts(StatusExchange({0xFD, 0x12})) +
                             std::vector<Line>{{2, "SMM Type is 0xffffffffuse default value"}}));
}

TEST_F(StatusRead, EmptyAnswerReturns4AndWritesBothWarnings) {
  platform.logThreshold = 2;
  platform.ExpectStatusReads(6, {});
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::NoUsableResult);
  EXPECT_EQ(status.platformId, -71);
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{2, std::string("response is empty or completeCode: \0", 36)},
                          kDefaultValueWarning));
}

TEST_F(StatusRead, ConnectionKindThatIsNotAdmittedCostsSixPausesAndReturns4) {
  inventory.connectionKind = 3;
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::NoUsableResult);
  EXPECT_EQ(status.platformId, -71);
  EXPECT_THAT(platform.pauses, ElementsAre(3, 3, 3, 3, 3, 3));
  EXPECT_THAT(platform.events, ::testing::Each("pause"));
}

TEST_F(StatusRead, UnreachableSmmCostsSixAttemptsAndReturns4) {
  platform.logThreshold = 2;
  for (int attempt = 0; attempt < 6; ++attempt) {
    platform.ExpectConnectFailures({3, 3, 3});
  }
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::NoUsableResult);
  EXPECT_EQ(status.platformId, -71);
  EXPECT_EQ(status.psuSlotCount, -72);
  EXPECT_THAT(platform.pauses, SizeIs(6));
  const Line connectLine = {1, "connect failed with error:3"};
  EXPECT_THAT(
      platform.lines,
      ElementsAre(connectLine, connectLine, connectLine, connectLine, connectLine, connectLine,
                  Line{2, "response is empty or completeCode: \xFF"}, kDefaultValueWarning));
}

TEST_F(StatusRead, AnswerAfterConnectionFailuresCounts) {
  for (int attempt = 0; attempt < 5; ++attempt) {
    platform.ExpectConnectFailures({5});
  }
  platform.ExpectStatusReads(1, StatusAnswer(0xFD, 0x03));
  EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  EXPECT_EQ(status.psuSlotCount, 9);
}

TEST_F(StatusRead, EveryAnswerLengthBelow14LeavesTheRecord) {
  for (const std::uint8_t completionCode : Bytes{0x00, 0xC1, 0xFF}) {
    for (std::size_t length = 2; length < 14; ++length) {
      platform.ExpectStatusReads(6, ShortAnswer(length), completionCode);
      EXPECT_EQ(inventory.GetSMMStatusImp(status),
                completionCode == 0 ? StatusCode::Success : StatusCode::NoUsableResult);
      EXPECT_EQ(status.platformId, -71) << "length " << length;
      EXPECT_EQ(status.psuSlotCount, -72) << "length " << length;
    }
  }
}

TEST_F(StatusRead, RefusedShortAnswerIsLoggedWithBothWarnings) {
  ExpectLines(SixAttempts(StatusExchange({0x01, 0x02})) +
                  std::vector<Line>{RefusedWarning(0xC1), kDefaultValueWarning},
              [&] {
                platform.ExpectStatusReads(6, {0x01, 0x02}, 0xC1);
                EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::NoUsableResult);
              });
}

TEST_F(StatusRead, UnreachableSmmIsLoggedAttemptByAttempt) {
  ExpectLines(SixAttempts({{1, "connect failed with error:5"}}) +
                  std::vector<Line>{RefusedWarning(0xFF), kDefaultValueWarning},
              [&] {
                for (int attempt = 0; attempt < 6; ++attempt) {
                  platform.ExpectConnectFailures({5});
                }
                EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::NoUsableResult);
              });
}

TEST_F(StatusRead, EgsIsLoggedBehindTheSixAttempts) {
  const Bytes answer = StatusAnswer(0xFD, 0x04);
  ExpectLines(SixAttempts(StatusExchange(answer)) + std::vector<Line>{kEgsWarning}, [&] {
    platform.ExpectStatusReads(6, answer);
    EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
  });
}

TEST_F(StatusRead, AcknowledgementIsLoggedFromThreshold3On) {
  ExpectLines(std::vector<Line>{{3, "Try to get SMM status, retry 1 time"}} +
                  Double::ExchangeLines("FN=0x32 cmd=0xa8 data=", {0x01}) +
                  std::vector<Line>{{3, "Succeeded get SMM Status"}, kDefaultValueWarning},
              [&] {
                platform.ExpectStatusReads(1, {0x01});
                EXPECT_EQ(inventory.GetSMMStatusImp(status), StatusCode::Success);
              });
}

}  // namespace
}  // namespace Tavrin
