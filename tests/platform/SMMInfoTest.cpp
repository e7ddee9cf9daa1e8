#include "platform/SMMInfo.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"
#include "tests/platform/LogCapture.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Tavrin {
namespace {

using Standalone::DetectionOutcome;
using Standalone::GetLastDetectionOutcome;
using testing::ElementsAre;
using testing::SizeIs;

/// What comes of one request.
struct Sent {
  int result = 0;
  std::uint8_t completionCode = 0;
};

/// What the scripted client does, and what was asked of it.
struct Script {
  std::deque<int> connectResults;
  std::deque<Sent> before;  ///< What comes of the first requests.
  int sendResult = 0;       ///< What comes of all others, with the two below.
  std::uint8_t completionCode = 0;
  std::vector<std::uint8_t> response;

  std::vector<std::string> calls;
};

Script* script = nullptr;

std::vector<std::string> wiped;

const SMMIype kAsPassed = static_cast<SMMIype>(77);

class SMMInfoTest : public testing::Test {
 protected:
  SMMInfoTest() {
    script = &script_;
    info_.address = "10.0.0.7";
    info_.port = 6230;
    info_.userName = "operator";
    info_.password = "swordfish";
    info_.connectionKind = 1;
  }
  ~SMMInfoTest() override { script = nullptr; }

  int Detect() { return SMMInfo(info_).GetSmmType(type_); }

  /// How often the client was called so.
  std::ptrdiff_t Count(const std::string& call) const {
    return std::count(script_.calls.begin(), script_.calls.end(), call);
  }

  /// Expects a failure that left the type as passed and wrote one line with `cause` in it.
  void ExpectNotDetected(const std::string& cause) {
    const LogCapture capture(2);
    EXPECT_EQ(Detect(), 1);
    EXPECT_EQ(type_, kAsPassed);
    ASSERT_THAT(capture.lines, SizeIs(1));
    EXPECT_EQ(capture.lines[0].level, 2U);
    EXPECT_EQ(capture.lines[0].source, "platform/standalone/smmcommoninfo/SMMInfo");
    EXPECT_EQ(
        capture.lines[0].text,
        "the generation of the SMM at host 10.0.0.7, port 6230 could not be detected: " + cause +
            "; set SMM_TYPE to 0 (first generation) or 1 (second) to do without detection");
  }

  Script script_;
  TavrinConnection::ConnectionInfo info_;
  SMMIype type_ = kAsPassed;
};

TEST_F(SMMInfoTest, FirstAnswerByteTellsTheGeneration) {
  struct Row {
    std::uint8_t first;
    SMMIype expected;
  };
  for (const Row row : {Row{0x00, SMM_FIRST_GENERATION}, Row{0x01, SMM_FIRST_GENERATION},
                        Row{0xFC, SMM_FIRST_GENERATION}, Row{0xFD, SMM_SECOND_GENERATION},
                        Row{0xFE, SMM_SECOND_GENERATION}, Row{0xFF, SMM_FIRST_GENERATION}}) {
    script_.connectResults = {0};
    script_.response = {row.first, 0x02};
    type_ = kAsPassed;
    EXPECT_EQ(Detect(), 0);
    EXPECT_EQ(type_, row.expected) << int{row.first};
  }
}

TEST_F(SMMInfoTest, PasswordIsWipedAtTheEnd) {
  wiped.clear();
  { const SMMInfo information(info_); }
  EXPECT_THAT(wiped, ElementsAre("swordfish"));
}

TEST_F(SMMInfoTest, OneStatusRequestIsSentOverOneConnection) {
  script_.connectResults = {0};
  script_.response = {0xFD};
  EXPECT_EQ(Detect(), 0);
  EXPECT_THAT(script_.calls, ElementsAre("client 10.0.0.7 operator swordfish 6230 3", "connect",
                                         "send 50 168 0", "disconnect", "destroyed"));
}

TEST_F(SMMInfoTest, KindSevenAdmitsTheRequest) {
  info_.connectionKind = 7;
  script_.connectResults = {0};
  script_.response = {0x01};
  EXPECT_EQ(Detect(), 0);
  EXPECT_EQ(type_, SMM_FIRST_GENERATION);
}

TEST_F(SMMInfoTest, OtherKindsSendNothing) {
  for (const int kind : {-1, 0, 2, 6, 8}) {
    const LogCapture capture;
    info_.connectionKind = kind;
    EXPECT_EQ(Detect(), 1) << kind;
    EXPECT_EQ(type_, kAsPassed);
    EXPECT_THAT(capture.lines, SizeIs(0));
  }
  EXPECT_THAT(script_.calls, SizeIs(0));
}

TEST_F(SMMInfoTest, OverrideContactsNobody) {
  struct Row {
    const char* text;
    SMMIype expected;
  };
  info_.connectionKind = 2;
  for (const Row row : {Row{"0", SMM_FIRST_GENERATION}, Row{"1", SMM_SECOND_GENERATION}}) {
    const ScopedEnvironment variable("SMM_TYPE", row.text);
    EXPECT_EQ(Detect(), 0);
    EXPECT_EQ(type_, row.expected);
  }
  EXPECT_THAT(script_.calls, SizeIs(0));
}

TEST_F(SMMInfoTest, OverrideOutOfRangeIsReportedAndTheGenerationDetected) {
  const LogCapture capture;
  const ScopedEnvironment variable("SMM_TYPE", "2");
  script_.connectResults = {0};
  script_.response = {0xFE};
  EXPECT_EQ(Detect(), 0);
  EXPECT_EQ(type_, SMM_SECOND_GENERATION);
  ASSERT_THAT(capture.lines, SizeIs(1));
  EXPECT_EQ(capture.lines[0].text,
            "SMM_TYPE is \"2\"; expected 0 (first generation), 1 (second) or -1 (detect); it is "
            "detected");
}

TEST_F(SMMInfoTest, ConnectionIsTriedThreeTimesWhenWorthIt) {
  script_.connectResults = {3, 3, 0};
  script_.response = {0xFD};
  EXPECT_EQ(Detect(), 0);
  EXPECT_EQ(type_, SMM_SECOND_GENERATION);
}

TEST_F(SMMInfoTest, ConnectionGivenUpAfterThreeAttempts) {
  script_.connectResults = {3, 3, 3, 0};
  ExpectNotDetected("no connection could be opened");
  EXPECT_THAT(script_.connectResults, SizeIs(1));
}

TEST_F(SMMInfoTest, AttemptsFollowTheConfiguration) {
  const ScopedEnvironment variable("IPMI_CONNECT_RETRY_TIMES", "1");
  script_.connectResults = {3, 0};
  ExpectNotDetected("no connection could be opened");
  EXPECT_THAT(script_.connectResults, SizeIs(1));
}

TEST_F(SMMInfoTest, NoAttemptAllowedMeansNoConnection) {
  const ScopedEnvironment variable("IPMI_CONNECT_RETRY_TIMES", "0");
  script_.connectResults = {0};
  ExpectNotDetected("no connection could be opened");
  EXPECT_THAT(script_.connectResults, SizeIs(1));
}

TEST_F(SMMInfoTest, FailureNotWorthRetryingEndsTheAttempts) {
  script_.connectResults = {6, 0};
  ExpectNotDetected("no connection could be opened");
  EXPECT_THAT(script_.connectResults, SizeIs(1));
}

TEST_F(SMMInfoTest, WhatMayPassIsTriedAgainOverAConnectionOfItsOwn) {
  constexpr int kWorthRetrying = 3;
  for (const Sent sent : {Sent{kWorthRetrying, 0xFF}, Sent{0, 0xC0}, Sent{0, 0xC3}, Sent{0, 0xCE},
                          Sent{0, 0xCF}, Sent{0, 0xD2}}) {
    const LogCapture capture;
    script_.calls.clear();
    script_.connectResults = {0, 0, 0};
    script_.before = {sent, sent};
    script_.response = {0xFD};
    type_ = kAsPassed;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Detect(), 0) << int{sent.completionCode};
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(type_, SMM_SECOND_GENERATION);
    EXPECT_EQ(Count("client 10.0.0.7 operator swordfish 6230 3"), 3);
    EXPECT_EQ(Count("disconnect"), 3);
    EXPECT_EQ(Count("destroyed"), 3);
    EXPECT_THAT(capture.lines, SizeIs(0));
  }
}

TEST_F(SMMInfoTest, WhatDoesNotPassIsGivenUpAfterThreeExchanges) {
  script_.connectResults = {0, 0, 0, 0};
  script_.sendResult = 3;
  ExpectNotDetected("the status request got no answer");
  EXPECT_THAT(script_.connectResults, SizeIs(1));
  EXPECT_EQ(Count("disconnect"), 3);
}

TEST_F(SMMInfoTest, WhatCannotPassIsNotTriedAgain) {
  for (const Sent sent :
       {Sent{10, 0xFF}, Sent{0, 0xC1}, Sent{0, 0xD4}, Sent{0, 0xD5}, Sent{0, 0xFF}}) {
    script_.connectResults = {0, 0};
    script_.before = {sent};
    EXPECT_NE(Detect(), 0) << int{sent.completionCode};
    EXPECT_THAT(script_.connectResults, SizeIs(1)) << int{sent.completionCode};
  }
}

TEST_F(SMMInfoTest, ConnectionThatFailsBetweenExchangesEndsThem) {
  script_.connectResults = {0, 6, 0};
  script_.before = {{0, 0xC0}};
  ExpectNotDetected("no connection could be opened");
  EXPECT_THAT(script_.connectResults, SizeIs(1));
}

TEST_F(SMMInfoTest, CompletionCodeOtherThanZeroIsNotDetected) {
  script_.connectResults = {0};
  script_.completionCode = 0xC1;
  script_.response = {0xFD};
  ExpectNotDetected("the status request was refused with completion code 0xc1");
}

TEST_F(SMMInfoTest, EmptyAnswerIsNotDetected) {
  script_.connectResults = {0};
  ExpectNotDetected("the answer to the status request is empty");
}

TEST_F(SMMInfoTest, OutcomeTellsHowTheLastDetectionEnded) {
  script_.connectResults = {0, 6};
  script_.response = {0x01};
  Detect();
  EXPECT_EQ(GetLastDetectionOutcome(), DetectionOutcome::Detected);
  EXPECT_EQ(Standalone::GetLastDetectionAnswer(), std::vector<std::uint8_t>{0x01});
  Detect();
  EXPECT_EQ(GetLastDetectionOutcome(), DetectionOutcome::Unknown);
  EXPECT_TRUE(Standalone::GetLastDetectionAnswer().empty());
  const ScopedEnvironment variable("SMM_TYPE", "1");
  Detect();
  EXPECT_EQ(GetLastDetectionOutcome(), DetectionOutcome::Configured);
}

TEST_F(SMMInfoTest, OutcomeIsUnknownWhenNothingMayBeSent) {
  info_.connectionKind = 2;
  Detect();
  EXPECT_EQ(GetLastDetectionOutcome(), DetectionOutcome::Unknown);
}

TEST_F(SMMInfoTest, OutcomeIsUnknownWhenTheDetectionThrows) {
  script_.connectResults = {0};
  script_.response = {0x01};
  Detect();
  EXPECT_THROW(Detect(), std::out_of_range);  // The script is at its end.
  EXPECT_EQ(GetLastDetectionOutcome(), DetectionOutcome::Unknown);
}

TEST_F(SMMInfoTest, OutcomeIsEachThreadsOwn) {
  script_.connectResults = {0, 6};
  script_.response = {0x01};
  Detect();
  DetectionOutcome atFirst = DetectionOutcome::Detected;
  DetectionOutcome atLast = DetectionOutcome::Detected;
  std::thread([&] {
    atFirst = GetLastDetectionOutcome();
    Detect();
    atLast = GetLastDetectionOutcome();
  }).join();
  EXPECT_EQ(atFirst, DetectionOutcome::NotTried);
  EXPECT_EQ(atLast, DetectionOutcome::Unknown);
  EXPECT_EQ(GetLastDetectionOutcome(), DetectionOutcome::Detected);
}

TEST_F(SMMInfoTest, FailureIsSilentBelowTheWarningThreshold) {
  const LogCapture capture(1);
  script_.connectResults = {6};
  EXPECT_NE(Detect(), 0);
  EXPECT_THAT(capture.lines, SizeIs(0));
}

}  // namespace

struct IpmiClient::State {};

IpmiClient::IpmiClient(const std::string& address, const std::string& userName,
                       const std::string& password, const std::string& port,
                       unsigned long cipherSuite) {
  script->calls.push_back("client " + address + " " + userName + " " + password + " " + port + " " +
                          std::to_string(cipherSuite));
}

IpmiClient::~IpmiClient() { script->calls.emplace_back("destroyed"); }

int IpmiClient::connect() {
  script->calls.emplace_back("connect");
  const int result = script->connectResults.at(0);
  script->connectResults.pop_front();
  return result;
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  script->calls.push_back("send " + std::to_string(request.netFn) + " " +
                          std::to_string(request.cmd) + " " + std::to_string(request.data.size()));
  if (!script->before.empty()) {
    const Sent sent = script->before.front();
    script->before.pop_front();
    response.clear();
    completionCode = sent.completionCode;
    return sent.result;
  }
  response = script->response;
  completionCode = script->completionCode;
  return script->sendResult;
}

int IpmiClient::disconnect() {
  script->calls.emplace_back("disconnect");
  return 0;
}

}  // namespace Tavrin

// In the place of the system's.
extern "C" void explicit_bzero(void* memory, std::size_t length) noexcept {
  Tavrin::wiped.emplace_back(static_cast<const char*>(memory), length);
  std::memset(memory, 0, length);
}
