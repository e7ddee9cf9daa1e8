#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "tests/faults/FaultTest.h"
#include "tests/support/Signals.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::SizeIs;
using WireFault = FaultTest;

/// The number of the datagram that answers the request for a session, and how many open one.
constexpr unsigned int kOpenSessionAnswer = 4;
constexpr unsigned int kOpening = 10;

/// Where these are in an answer of a session that nothing protects.
constexpr std::size_t kNetworkFunctionAt = 17;
constexpr std::size_t kCommandAt = 21;

/// Empty and random datagrams come every 5 ms for two seconds after each request, and no answer
/// does.
Fault GarbageFlood() {
  return [garbage = Garbage(1)](const Datagram& datagram) {
    Departures departures;
    for (int after = 0; datagram.direction == Direction::ToController && after < 2000; after += 5) {
      departures.push_back({garbage({Direction::ToClient, {}})[0].datagram, milliseconds(after)});
    }
    return departures;
  };
}

TEST_F(WireFault, SilenceIsNotConnectedAfterEveryAttempt) {
  relay.Break(Silence());
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, SilentControllerIsAskedLessOftenFromAttemptToAttempt) {
  std::vector<milliseconds::rep> asked;
  const auto start = std::chrono::steady_clock::now();
  relay.Break([&](const Datagram& /*datagram*/) {
    const auto now = std::chrono::steady_clock::now();
    asked.push_back(std::chrono::duration_cast<milliseconds>(now - start).count());
    return Departures{};
  });
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  relay.Heal();
  // A machine that is held up asks less often still, but never sooner; what the relay takes late
  // looks as if it had come sooner behind.
  ASSERT_THAT(asked, SizeIs(AllOf(Ge(6), Le(5 + 3 + 2))));
  EXPECT_GE(asked[1] - asked[0], 350);
  EXPECT_GE(asked.back() - asked[asked.size() - 2], 1500);
}

TEST_F(WireFault, SilenceInTheMiddleOfOpeningIsNotConnectedAfterEveryAttempt) {
  relay.Break(SilenceAfter(2));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
}

TEST_F(WireFault, SilenceToTheProofOfThePasswordIsNotConnectedAfterEveryAttempt) {
  // Whether the session is open has to show in the next step, and it is closed in any case.
  relay.Break(SilenceAfter(3));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect + 2 * kSessionTimeout});
  ExpectRecovery();
}

TEST_F(WireFault, SilenceToTheRequestIsAnUnusableAnswer) {
  relay.Break(SilenceAfter(5));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  ExpectRecovery();
}

TEST_F(WireFault, SilenceToTheClosingCostsNothingButTime) {
  relay.Break(SilenceAfter(6));
  ExpectQuery({StatusCode::Success, 0, kSilentSend});
  ExpectRecovery();
}

TEST_F(WireFault, LossOfOneInFiveIsMostlyHealedByRepetition) {
  relay.Break(Loss(1, 20));
  ExpectMostQueries(10, 6);
  ExpectRecovery();
}

TEST_F(WireFault, OneSecondCopyCostsNothing) {
  relay.Break(Only(kOpenSessionAnswer, Duplicated()));
  const std::size_t before = relay.SessionsAskedFor();
  ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
  EXPECT_EQ(relay.SessionsAskedFor() - before, 1U);
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, SecondCopyOfEveryAnswerCostsNothing) {
  relay.Break(At(Answer::Any, Duplicated()));
  for (int query = 0; query < 20; ++query) {
    ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
  }
  ExpectNoSession();
}

TEST_F(WireFault, SecondCopyOfEveryDatagramCostsNothing) {
  relay.Break(Duplicated());
  for (int query = 0; query < 20; ++query) {
    ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
  }
  ExpectRecovery();
}

TEST_F(WireFault, SecondCopiesWithinTheSessionDoNoHarm) {
  relay.Break(After(kOpening, Duplicated()));
  ExpectQuery({StatusCode::Success, 0, kSilentSend});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, ReorderedDatagramsAreHealedByRepetition) {
  relay.Break(Reordered());
  ExpectQuery({StatusCode::Success, 0, kSlowQuery});
  ExpectRecovery();
}

TEST_F(WireFault, DelayBelowTheRetransmissionIntervalIsOnlyTime) {
  relay.Break(Delayed(milliseconds(120)));
  ExpectQuery({StatusCode::Success, 0, kSlowQuery});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, DelayBeyondTheRetransmissionIntervalIsOnlyTime) {
  relay.Break(Delayed(milliseconds(900)));
  ExpectQuery({StatusCode::Success, 0, kSlowQuery});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, DelayBeyondTheSessionTimeoutIsNotConnectedAndSaysHowLate) {
  relay.Break(Delayed(kSessionTimeout + milliseconds(500)));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  EXPECT_THAT(LogText(),
              ContainsRegex("the controller answers, but only 2\\.[3-9] seconds after it "
                            "was asked; allow more time \\(IPMI_SESSION_TIMEOUT_MS\\)"));
  EXPECT_EQ(Standalone::GetLastExchange().cause, Standalone::FailureCause::Late);
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, TruncatedAnswersAreNotConnected) {
  relay.Break(Truncated(1, 100));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, AnswersTruncatedNowAndThenAreMostlyHealed) {
  relay.Break(Truncated(1, 10));
  ExpectMostQueries(10, 6);
  ExpectRecovery();
}

TEST_F(WireFault, AnswersTruncatedWithinTheSessionAreAnUnusableAnswer) {
  relay.Break(After(kOpening, Truncated(1, 100)));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, GarbageIsNotConnected) {
  relay.Break(Garbage(1));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, GarbageWithoutEndDoesNotExtendTheAttempts) {
  relay.Break(GarbageFlood());
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, GarbageWithinTheSessionIsAnUnusableAnswer) {
  relay.Break(After(kOpening, Garbage(1)));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, GarbageWithoutEndDoesNotExtendTheRequest) {
  relay.Break(After(kOpening, GarbageFlood()));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  ExpectRecovery();
}

TEST_F(WireFault, AnotherRequestsAnswerDuringOpeningIsHealedByRepetition) {
  relay.Break(AnswerToTheRequestBefore(0));
  ExpectQuery({StatusCode::Success, 0, kSlowQuery});
  ExpectRecovery();
}

TEST_F(WireFault, AnotherRequestsAnswerWithinTheSessionIsHealedByRepetition) {
  relay.Break(AnswerToTheRequestBefore(kOpening));
  ExpectQuery({StatusCode::Success, 0, kSlowQuery});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, AnswerWithAnotherCommandIsNotTakenForTheAnswer) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 0);
  relay.Break(After(kOpening, Changed(Answer::WithinSession,
                                      [](auto& bytes) { bytes.at(kCommandAt) ^= 0x01U; })));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  EXPECT_THAT(LogText(), HasSubstr("no answer within the session time-out but another request's"));
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, AnswerWithAnotherNetworkFunctionIsNotTakenForTheAnswer) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 0);
  relay.Break(After(kOpening, Changed(Answer::WithinSession,
                                      [](auto& bytes) { bytes.at(kNetworkFunctionAt) ^= 0x08U; })));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, CaughtSignalsDoNotMoveTheEndOfTheWaiting) {
  relay.Break(Silence());
  const Signals signals(milliseconds(1));
  const auto start = std::chrono::steady_clock::now();
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  EXPECT_GE(std::chrono::steady_clock::now() - start, kSilentConnect);
  EXPECT_GT(signals.Caught(), 10);
}

}  // namespace
}  // namespace Tavrin
