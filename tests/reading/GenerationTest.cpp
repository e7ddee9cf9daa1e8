#include "reading/Generation.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using testing::Contains;
using testing::ElementsAre;

class GenerationTest : public ScriptedEnclosure {
 protected:
  GenerationTest() {
    info_.address = "192.0.2.17";
    info_.port = 6230;
    info_.userName = "operator-7";
    info_.password = "sesame";
    info_.connectionKind = 7;
    smm_.platform.expectedSettings = info_;
  }

  TavrinConnection::ConnectionInfo info_;
  const Standalone::ThreadLog quiet_{0, {}};
};

class ConfiguredGeneration : public GenerationTest {
 protected:
  Standalone::ThreadConfig config_{{{"SMM_TYPE", SMM_SECOND_GENERATION}}};
};

TEST_F(GenerationTest, DetectedGenerationNeedsNoFurtherExchange) {
  smm_.generation = SMM_SECOND_GENERATION;
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::Success);
  EXPECT_EQ(generation.value, SMM_SECOND_GENERATION);
  EXPECT_EQ(smm_.Asked(), Steps{kStatus});
}

TEST_F(GenerationTest, LayoutIsThePlatformsByteAndThatOfTheSlots) {
  smm_.Change(kStatus, Gives(Double::StatusAnswer(0xFD, 0x03)));
  FindGeneration(info_);
  EXPECT_EQ(LastLayout(), Layout(0xFD, 0x03));
}

TEST_F(ConfiguredGeneration, IsTakenOnceAConnectionWasOpen) {
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::Success);
  EXPECT_EQ(generation.value, SMM_SECOND_GENERATION);
  EXPECT_THAT(smm_.platform.events,
              ElementsAre("client constructed", "connect", "disconnect", "client destroyed"));
}

TEST_F(ConfiguredGeneration, TakesAsLongAsItsConnection) {
  constexpr std::chrono::milliseconds kShort{5};
  smm_.platform.onEvent = [&](const std::string&) { std::this_thread::sleep_for(kShort); };
  EXPECT_GE(FindGeneration(info_).duration, kShort);
}

TEST_F(ConfiguredGeneration, IsConnectedForAsOftenAsAllowed) {
  smm_.Lose(0, FailureCause::Silence, "no answer");
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::NotConnected);
  EXPECT_EQ(generation.cause.kind, FailureCause::Silence);
  EXPECT_EQ(generation.cause.missing, "");
  EXPECT_THAT(smm_.platform.events, ElementsAre("client constructed", "connect", "connect",
                                                "connect", "disconnect", "client destroyed"));
}

TEST_F(ConfiguredGeneration, IsNotConnectedForAgainAfterARefusedLogin) {
  smm_.Lose(0, FailureCause::PasswordRefused, "wrong password");
  EXPECT_EQ(FindGeneration(info_).cause.words, "wrong password");
  EXPECT_THAT(smm_.platform.events, Contains("connect").Times(1));
}

TEST_F(ConfiguredGeneration, StaysKnownWhenTheConnectionBreaks) {
  smm_.Lose(0, FailureCause::FellSilent, "silent since then");
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::NotConnected);
  EXPECT_EQ(generation.cause.missing, "");
}

TEST_F(ConfiguredGeneration, NoAttemptIsToldByTheKeyThatForbidsIt) {
  config_.Set("IPMI_CONNECT_RETRY_TIMES", -2);
  EXPECT_EQ(FindGeneration(info_).cause.words,
            "IPMI_CONNECT_RETRY_TIMES is -2, which allows no attempt");
}

TEST_F(GenerationTest, FailureBeforeAConnectionWasOpenMissesNothing) {
  for (const FailureCause cause : {FailureCause::Silence, FailureCause::PasswordRefused,
                                   FailureCause::NoAttempt, FailureCause::Other}) {
    SCOPED_TRACE(static_cast<int>(cause));
    smm_.Lose(0, cause, "words");
    const Query<SMMIype> generation = FindGeneration(info_);
    EXPECT_EQ(generation.status, StatusCode::NotConnected);
    EXPECT_EQ(generation.cause.kind, cause);
    EXPECT_EQ(generation.cause.completionCode, 0);
    EXPECT_EQ(generation.cause.missing, "");
  }
}

TEST_F(GenerationTest, FailureOverAnOpenConnectionLeavesTheGenerationMissing) {
  for (const FailureCause cause : {FailureCause::FellSilent, FailureCause::Late,
                                   FailureCause::DamagedAnswer, FailureCause::OtherAnswer}) {
    SCOPED_TRACE(static_cast<int>(cause));
    smm_.Change(kStatus, FallsSilent(cause, "words"));
    const Query<SMMIype> generation = FindGeneration(info_);
    EXPECT_EQ(generation.status, StatusCode::NoUsableResult);
    EXPECT_EQ(generation.cause.kind, cause);
    EXPECT_EQ(generation.cause.missing, "generation");
  }
}

TEST_F(GenerationTest, AnswerThatTellsNoneIsTheCause) {
  smm_.Change(kStatus, Refuses());
  const Query<SMMIype> generation = FindGeneration(info_);
  EXPECT_EQ(generation.status, StatusCode::NoUsableResult);
  EXPECT_EQ(generation.cause.completionCode, 0xC1);
  EXPECT_EQ(generation.cause.missing, "generation");
}

}  // namespace
}  // namespace Tavrin
