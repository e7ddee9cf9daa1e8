#include "platform/standalone/ipmi_client/Interruption.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <optional>
#include <vector>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "platform/standalone/ipmi_client/Conversation.h"
#include "platform/standalone/ipmi_client/ThreadDeadline.h"
#include "tests/platform/ScriptedNetwork.h"

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

/// A question that is never answered, asked from time 0 on.
class InterruptionTest : public testing::Test {
 protected:
  InterruptionTest() {
    ScriptedNetwork::Reset();
    conversation.emplace("192.0.2.1", 623);
    conversation->BeginAttempt({milliseconds(1000), milliseconds(400), milliseconds(400)});
    question.make = [] { return Datagram{0x3F}; };
    question.judge = [this](const Datagram&) {
      onArrival();
      return Verdict::Foreign;
    };
  }
  ~InterruptionTest() override { AllowExchanges(); }

  static Clock::time_point After(int time) { return Clock::now() + milliseconds(time); }

  /// Exchanges are stopped so many milliseconds after now.
  void StopAfter(int time) {
    onArrival = [] { std::raise(SIGUSR1); };
    network.Deliver(milliseconds(time), {0x03});
  }

  void ExpectEnd(Trouble trouble, int end) {
    const Failure failure = conversation->Ask(question);
    EXPECT_EQ(failure.words, FailureOf(trouble).words);
    EXPECT_EQ(network.now, milliseconds(end));
  }

  std::vector<long> Sendings() const {
    std::vector<long> times;
    for (const ScriptedNetwork::Sent& sent : network.sent) {
      times.push_back(sent.at.count());
    }
    return times;
  }

  std::optional<Conversation> conversation;
  Question question;
  std::function<void()> onArrival = [] {};
};

TEST_F(InterruptionTest, WithoutOneAQuestionLastsUntilItsTimeout) {
  EXPECT_EQ(EndOfExchanges(), Clock::time_point::max());
  ExpectEnd(Trouble::NoAnswer, 1000);
}

TEST_F(InterruptionTest, DeadlineEndsTheWaitingAndTheRepetitions) {
  const ThreadDeadline deadline(After(450));
  ExpectEnd(Trouble::TimeOver, 450);
  EXPECT_THAT(Sendings(), ElementsAre(0, 400));
}

TEST_F(InterruptionTest, BehindTheDeadlineNothingIsSent) {
  const ThreadDeadline deadline(After(0));
  ExpectEnd(Trouble::TimeOver, 0);
  EXPECT_THAT(Sendings(), ElementsAre());
}

TEST_F(InterruptionTest, DeadlineBehindTheTimeoutChangesNothing) {
  const ThreadDeadline deadline(After(1001));
  ExpectEnd(Trouble::NoAnswer, 1000);
  EXPECT_THAT(Sendings(), ElementsAre(0, 400, 800));
}

TEST_F(InterruptionTest, EarliestOfNestedDeadlinesHolds) {
  const auto now = Clock::now();
  const ThreadDeadline outer(now + milliseconds(300));
  {
    const ThreadDeadline earlier(now + milliseconds(100));
    EXPECT_EQ(EndOfExchanges(), now + milliseconds(100));
    const ThreadDeadline later(now + milliseconds(200));
    EXPECT_EQ(EndOfExchanges(), now + milliseconds(100));
  }
  EXPECT_EQ(EndOfExchanges(), now + milliseconds(300));
}

TEST_F(InterruptionTest, StopEndsTheWaitingAtOnceWhereItIsNoticed) {
  std::signal(SIGUSR1, [](int /*number*/) { StopExchanges(); });
  StopAfter(120);
  ExpectEnd(Trouble::Stopped, 120);
  EXPECT_TRUE(AreExchangesStopped());
  EXPECT_THAT(Sendings(), ElementsAre(0));
  std::signal(SIGUSR1, SIG_DFL);
}

TEST_F(InterruptionTest, StopBesideItIsNoticedWithinFiftyMilliseconds) {
  network.whileWaiting = [](ScriptedNetwork::Time until) {
    if (until >= milliseconds(120)) {
      StopExchanges();
    }
  };
  ExpectEnd(Trouble::Stopped, 150);
}

TEST_F(InterruptionTest, BehindAStopNothingIsSentUntilExchangesAreAllowed) {
  StopExchanges();
  ExpectEnd(Trouble::Stopped, 0);
  EXPECT_THAT(Sendings(), ElementsAre());
  AllowExchanges();
  EXPECT_FALSE(AreExchangesStopped());
  ExpectEnd(Trouble::NoAnswer, 1000);
}

TEST_F(InterruptionTest, FirstOfStopAndDeadlineSaysWhy) {
  const ThreadDeadline deadline(After(10));
  StopExchanges();
  ExpectEnd(Trouble::Stopped, 0);
  AllowExchanges();
  network.now += milliseconds(20);
  StopExchanges();
  ExpectEnd(Trouble::TimeOver, 20);
}

TEST_F(InterruptionTest, StopThatWasTakenBackMeanwhileIsStillWhatEndedTheExchange) {
  EXPECT_EQ(InterruptionFailure().words, FailureOf(Trouble::Stopped).words);
}

TEST_F(InterruptionTest, QuestionWithGraceIsAskedBehindTheEndAndWaitedForAsLong) {
  StopExchanges();
  network.now += milliseconds(5000);
  question.grace = milliseconds(300);
  ExpectEnd(Trouble::Stopped, 5300);
  EXPECT_THAT(Sendings(), ElementsAre(5000));
}

TEST_F(InterruptionTest, QuestionWithGraceThatWasAskedBeforeHasItFromTheEndOn) {
  const ThreadDeadline deadline(After(50));
  question.grace = milliseconds(300);
  ExpectEnd(Trouble::TimeOver, 350);
}

TEST_F(InterruptionTest, QuestionWithGraceLastsNoLongerThanItsTimeout) {
  const ThreadDeadline deadline(After(900));
  question.grace = milliseconds(300);
  ExpectEnd(Trouble::NoAnswer, 1000);
}

}  // namespace
}  // namespace Tavrin::Standalone
