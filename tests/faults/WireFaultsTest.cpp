#include <gtest/gtest.h>

#include <vector>

#include "tests/faults/FaultTest.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using WireFault = FaultTest;

/// The number of the datagram with which the controller answers the request to open a session, and
/// how many datagrams open one.
constexpr unsigned int kOpenSessionAnswer = 4;
constexpr unsigned int kOpening = 10;

TEST_F(WireFault, SilenceIsNotConnectedAfterEveryAttempt) {
  relay.Break(Silence());
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, SilenceInTheMiddleOfOpeningIsNotConnectedAfterEveryAttempt) {
  relay.Break(SilenceAfter(3));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
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

TEST_F(WireFault, OneSecondCopyCostsOneAttempt) {
  relay.Break(Only(kOpenSessionAnswer, Duplicated()));
  const std::size_t before = relay.SessionsAskedFor();
  ExpectQuery({StatusCode::Success, 1, kSlowQuery});
  EXPECT_EQ(relay.SessionsAskedFor() - before, 2U);
  ExpectRecovery();
}

TEST_F(WireFault, SecondCopyOfEveryDatagramIsNotConnected) {
  relay.Break(Duplicated());
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
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

TEST_F(WireFault, DelayThatCostsRepetitionsInEveryStepMayTakeASessionTimeoutForEach) {
  // ipmi_sim does not answer a repeated RAKP message 3, so that the last step but one fails.
  relay.Break(Delayed(milliseconds(460)));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSlowestQuery});
  ExpectRecovery();
}

TEST_F(WireFault, DelayBeyondTheLongestIntervalIsNotConnected) {
  relay.Break(Delayed(milliseconds(1000)));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
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
  relay.Break(GarbageFlood(1));
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
  relay.Break(After(kOpening, GarbageFlood(1)));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  ExpectRecovery();
}

TEST_F(WireFault, AnotherRequestsAnswerDuringOpeningIsNotConnected) {
  relay.Break(AnswerToTheRequestBefore(0));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(WireFault, AnotherRequestsAnswerWithinTheSessionIsNotTakenForTheAnswer) {
  relay.Break(AnswerToTheRequestBefore(kOpening));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSlowQuery});
  ExpectRecovery();
  ExpectNoSession();
}

}  // namespace
}  // namespace Tavrin
