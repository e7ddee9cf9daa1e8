#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Line;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SendIpmiCmd : public Double::InventoryTest {
 protected:
  SendIpmiCmd() {
    request.netFn = 0x32;
    request.cmd = 0xB0;
    request.data = {0x05, 0x01};
  }

  int Send() { return inventory.SendIpmiCmd(request, response, completionCode); }

  void ExpectOutputsAsPassed() {
    EXPECT_EQ(response, (Bytes{0xAA, 0xBB}));
    EXPECT_EQ(completionCode, 0x77);
  }

  void ExpectOutputsOfNoAnswer() {
    EXPECT_THAT(response, IsEmpty());
    EXPECT_EQ(completionCode, 0xFF);
  }

  IPMICOMMAND request;
  Bytes response = {0xAA, 0xBB};
  std::uint8_t completionCode = 0x77;
};

TEST_F(SendIpmiCmd, ConnectionKinds1And7ReachTheClient) {
  for (const int kind : {1, 7}) {
    inventory.connectionKind = kind;
    platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
    EXPECT_EQ(Send(), StatusCode::Success) << "connection kind " << kind;
  }
}

TEST_F(SendIpmiCmd, OtherConnectionKindsReturn1WithoutClientOrLine) {
  for (const int kind : {0, 2, 3, 6, 8, -1, 257, std::numeric_limits<int>::min()}) {
    inventory.connectionKind = kind;
    EXPECT_EQ(Send(), StatusCode::ConnectionKindNotAdmitted) << "connection kind " << kind;
  }
  ExpectOutputsAsPassed();
  EXPECT_THAT(platform.events, IsEmpty());
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(SendIpmiCmd, ExchangeConnectsSendsAndDisconnectsInThisOrder) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
  Send();
  EXPECT_THAT(platform.events, ElementsAre("client constructed", "configuration read", "connect",
                                           "send", "disconnect", "client destroyed"));
}

TEST_F(SendIpmiCmd, PortIsHandedOverAsDecimalText) {
  for (const std::uint16_t port : std::vector<std::uint16_t>{0, 623, 65535}) {
    inventory.port = port;
    platform.expectedSettings.port = port;
    platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
    EXPECT_EQ(Send(), StatusCode::Success);
  }
}

TEST_F(SendIpmiCmd, AnswerAndCompletionCodeAreHandedBackAsTheClientFilledThem) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x12, 0x00, 0xFF}, 0xC3);
  EXPECT_EQ(Send(), StatusCode::Success);
  EXPECT_EQ(response, (Bytes{0x12, 0x00, 0xFF}));
  EXPECT_EQ(completionCode, 0xC3);
}

TEST_F(SendIpmiCmd, AttemptLimitOfZeroOrLessNeverConnects) {
  for (const int limit : {0, -1, std::numeric_limits<int>::min()}) {
    platform.ForgetWhatHappened();
    platform.connectAttempts = limit;
    platform.ExpectConnectFailures({});
    EXPECT_EQ(Send(), StatusCode::NotConnected) << "limit " << limit;
    ExpectOutputsOfNoAnswer();
    EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:3"}));
    EXPECT_THAT(platform.events,
                ElementsAre("client constructed", "configuration read", "client destroyed"));
  }
}

TEST_F(SendIpmiCmd, DefaultLimitMakesThreeAttemptsAtOnce) {
  platform.ExpectConnectFailures({3, 3, 3});
  EXPECT_EQ(Send(), StatusCode::NotConnected);
  ExpectOutputsOfNoAnswer();
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:3"}));
  EXPECT_THAT(platform.pauses, IsEmpty());
}

TEST_F(SendIpmiCmd, LimitIsTheTotalNumberOfAttempts) {
  platform.connectAttempts = 1;
  platform.ExpectConnectFailures({3});
  EXPECT_EQ(Send(), StatusCode::NotConnected);
}

TEST_F(SendIpmiCmd, LimitIsReadAnewForEveryRequest) {
  platform.ExpectConnectFailures({3, 3, 3});
  Send();
  platform.connectAttempts = 5;
  platform.ExpectConnectFailures({3, 3, 3, 3, 3});
  EXPECT_EQ(Send(), StatusCode::NotConnected);
}

TEST_F(SendIpmiCmd, FailureNotWorthRetryingEndsTheAttemptsAtOnce) {
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(Send(), StatusCode::NotConnected);
  ExpectOutputsOfNoAnswer();
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:5"}));
}

TEST_F(SendIpmiCmd, FailureNotWorthRetryingIsReportedAfterARetryToo) {
  platform.ExpectConnectFailures({3, -12});
  EXPECT_EQ(Send(), StatusCode::NotConnected);
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:-12"}));
}

TEST_F(SendIpmiCmd, FailedConnectionIsNotDisconnected) {
  platform.ExpectConnectFailures({5});
  Send();
  EXPECT_THAT(platform.events, ElementsAre("client constructed", "configuration read", "connect",
                                           "client destroyed"));
}

TEST_F(SendIpmiCmd, ConnectionOfALaterAttemptIsUsed) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
  platform.script.back().connectResults = {3, 3, 0};
  EXPECT_EQ(Send(), StatusCode::Success);
  EXPECT_EQ(response, (Bytes{0x11}));
}

TEST_F(SendIpmiCmd, FailureLineIsWrittenFromThreshold1On) {
  for (const unsigned int threshold : {0U, 1U, 2U, 3U, 4U}) {
    platform.ForgetWhatHappened();
    platform.logThreshold = threshold;
    platform.ExpectConnectFailures({5});
    Send();
    EXPECT_EQ(platform.lines.size(), threshold >= 1 ? 1U : 0U) << "threshold " << threshold;
  }
}

TEST_F(SendIpmiCmd, ResultOfSendIsNotLookedAt) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {}, 0xFF);
  platform.script.back().sendResult = 9;
  EXPECT_EQ(Send(), StatusCode::Success);
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x1 "},
                          Line{4, "Response="}, Line{4, "Response="}));
}

TEST_F(SendIpmiCmd, CompletionCodeOtherThan0ReturnsSuccessAndLogsBothRenderings) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x41, 0x00, 0x0F}, 0xC1);
  EXPECT_EQ(Send(), StatusCode::Success);
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x1 "},
                          Line{4, std::string("Response=A \0 \x0F ", 15)},
                          Line{4, "Response=0x41 0x0 0xf "}));
}

TEST_F(SendIpmiCmd, RequestWithoutDataLogsNothingBehindData) {
  request.netFn = 0x06;
  request.cmd = 0x01;
  request.data.clear();
  platform.Expect(0x06, 0x01, {}, {0x11});
  Send();
  EXPECT_EQ(platform.lines.front(), (Line{4, "Send impi cmd suceess: FN=0x6 cmd=0x1 data="}));
}

TEST_F(SendIpmiCmd, ExchangeLinesAreWrittenAtThreshold4Alone) {
  for (const unsigned int threshold : {0U, 1U, 2U, 3U, 4U, 5U}) {
    platform.ForgetWhatHappened();
    platform.logThreshold = threshold;
    platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
    Send();
    EXPECT_EQ(platform.lines.size(), threshold >= 4 ? 3U : 0U) << "threshold " << threshold;
  }
}

TEST_F(SendIpmiCmd, ThresholdIsTestedAnewForEachLine) {
  platform.laterThresholds = {4, 3, 4};
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
  Send();
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x1 "},
                          Line{4, "Response=0x11 "}));
}

TEST_F(SendIpmiCmd, EachLineCarriesItsOwnLineNumber) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
  Send();
  ASSERT_EQ(platform.lines.size(), 3U);
  EXPECT_LT(platform.lines[0].number, platform.lines[1].number);
  EXPECT_LT(platform.lines[1].number, platform.lines[2].number);
}

TEST_F(SendIpmiCmd, LinesAreWrittenBetweenTheEndOfTheConversationAndThatOfTheClient) {
  std::vector<std::string> seen;
  platform.whileWritten = [&](const Line&) { seen.push_back(platform.events.back()); };
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x11});
  Send();
  EXPECT_THAT(seen, ElementsAre("disconnect", "disconnect", "disconnect"));
}

TEST_F(SendIpmiCmd, OutputsOfNoAnswerAreThereBeforeTheFailureLine) {
  platform.whileWritten = [this](const Line& line) {
    EXPECT_EQ(line, (Line{1, "connect failed with error:5"}));
    ExpectOutputsOfNoAnswer();
    EXPECT_EQ(platform.events.back(), "connect");
  };
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(Send(), StatusCode::NotConnected);
  EXPECT_EQ(platform.lines.size(), 1U);
}

TEST_F(SendIpmiCmd, AnswerOf300BytesIsHandedBackAndRenderedInFull) {
  const Bytes answer(300, 0x41);
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, answer);
  EXPECT_EQ(Send(), StatusCode::Success);
  EXPECT_EQ(response, answer);
  EXPECT_EQ(platform.lines, Double::ExchangeLines("FN=0x32 cmd=0xb0 data=0x5 0x1 ", answer));
}

TEST_F(SendIpmiCmd, ExceptionOfConnectReachesTheCallerAndDestroysTheClient) {
  platform.ExpectConnectFailures({5});
  platform.script.back().exception = std::make_exception_ptr(std::runtime_error("connect broke"));
  EXPECT_THROW(Send(), std::runtime_error);
  EXPECT_EQ(platform.events.back(), "client destroyed");
  ExpectOutputsAsPassed();
}

TEST_F(SendIpmiCmd, ExceptionOfSendReachesTheCallerAndDestroysTheClient) {
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {});
  platform.script.back().exception = std::make_exception_ptr(std::runtime_error("send broke"));
  EXPECT_THROW(Send(), std::runtime_error);
  EXPECT_EQ(platform.events.back(), "client destroyed");
}

TEST_F(SendIpmiCmd, NumbersIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  inventory.port = 62345;
  platform.expectedSettings.port = 62345;
  platform.ExpectConnectFailures({123456});
  Send();
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "connect failed with error:123456"}));
}

}  // namespace
}  // namespace Tavrin
