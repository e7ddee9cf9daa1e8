#include "reading/Generation.h"

#include <gmock/gmock.h>

#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using Standalone::DetectionOutcome;
using testing::ElementsAre;

class GenerationTest : public ScriptedEnclosure {
 protected:
  GenerationTest() { info_.port = 6230; }

  static void FailDetection() {
    TheScript().detection = DetectionOutcome::Unknown;
    TheScript().generation = [](SMMIype&) { return 1; };
  }
  static void Configure(SMMIype generation) {
    TheScript().detection = DetectionOutcome::Configured;
    TheScript().generation = Generation(generation);
  }

  TavrinConnection::ConnectionInfo info_;
  const Standalone::ThreadLog quiet_{0, {}};
};

TEST_F(GenerationTest, DetectedGenerationNeedsNoFurtherExchange) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::Success);
  EXPECT_EQ(generation.value, SMM_SECOND_GENERATION);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation"));
}

TEST_F(GenerationTest, ConfiguredGenerationIsTakenOnceAConnectionWasOpen) {
  Configure(SMM_SECOND_GENERATION);
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::Success);
  EXPECT_EQ(generation.value, SMM_SECOND_GENERATION);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "client for port 6230, cipher suite 3",
                                             "connection", "end of the connection"));
}

TEST_F(GenerationTest, ConnectionForAConfiguredGenerationIsTriedAsOftenAsAllowed) {
  Configure(SMM_FIRST_GENERATION);
  TheScript().connect = [] {
    LoseConnection(FailureCause::Silence, "no answer");
    return 3;
  };
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::NotConnected);
  EXPECT_EQ(generation.cause.kind, FailureCause::Silence);
  EXPECT_EQ(generation.cause.missing, "");
  EXPECT_THAT(TheScript().asked,
              ElementsAre("generation", "client for port 6230, cipher suite 3", "connection",
                          "connection", "connection", "end of the connection"));
}

TEST_F(GenerationTest, RefusedLoginForAConfiguredGenerationIsNotTriedAgain) {
  Configure(SMM_FIRST_GENERATION);
  TheScript().connect = [] {
    LoseConnection(FailureCause::PasswordRefused, "wrong password");
    return 6;
  };
  EXPECT_EQ(FindGeneration(info_).cause.words, "wrong password");
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "client for port 6230, cipher suite 3",
                                             "connection", "end of the connection"));
}

TEST_F(GenerationTest, ConfiguredGenerationStaysKnownWhenTheConnectionBreaks) {
  Configure(SMM_FIRST_GENERATION);
  TheScript().connect = [] {
    LoseConnection(FailureCause::FellSilent, "silent since then");
    return 3;
  };
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::NotConnected);
  EXPECT_EQ(generation.cause.missing, "");
}

TEST_F(GenerationTest, NoAttemptIsToldByTheKeyThatForbidsIt) {
  Configure(SMM_FIRST_GENERATION);
  const Standalone::ThreadConfig config({{"IPMI_CONNECT_RETRY_TIMES", -2}});
  EndUnanswered(FailureCause::NoAttempt, "");
  EXPECT_EQ(FindGeneration(info_).cause.words,
            "IPMI_CONNECT_RETRY_TIMES is -2, which allows no attempt");
}

struct Undetected {
  FailureCause cause;
  int status;
  std::string missing;
};

TEST_F(GenerationTest, FailureTellsWhetherAConnectionWasOpen) {
  const std::vector<Undetected> table = {
      {FailureCause::Silence, StatusCode::NotConnected, ""},
      {FailureCause::PasswordRefused, StatusCode::NotConnected, ""},
      {FailureCause::NoAttempt, StatusCode::NotConnected, ""},
      {FailureCause::Other, StatusCode::NotConnected, ""},
      {FailureCause::FellSilent, StatusCode::NoUsableResult, "generation"},
      {FailureCause::Late, StatusCode::NoUsableResult, "generation"},
      {FailureCause::DamagedAnswer, StatusCode::NoUsableResult, "generation"},
      {FailureCause::OtherAnswer, StatusCode::NoUsableResult, "generation"},
  };
  FailDetection();
  for (const Undetected& row : table) {
    SCOPED_TRACE(static_cast<int>(row.cause));
    EndUnanswered(row.cause, "words");
    const Query<SMMIype> generation = FindGeneration(info_);
    EXPECT_EQ(generation.status, row.status);
    EXPECT_EQ(generation.cause.kind, row.cause);
    EXPECT_EQ(generation.cause.missing, row.missing);
  }
}

TEST_F(GenerationTest, AnswerThatTellsNoneIsTheCause) {
  FailDetection();
  EndAnswered(0xC0, 0);
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::NoUsableResult);
  EXPECT_EQ(generation.cause.completionCode, 0xC0);
  EXPECT_EQ(generation.cause.missing, "generation");
}

}  // namespace
}  // namespace Tavrin
