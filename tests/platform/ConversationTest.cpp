#include "platform/standalone/ipmi_client/Conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "tests/platform/ScriptedNetwork.h"

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

const Datagram kAsked = {0x3F};
const Datagram kAnswer = {0x01};
const Datagram kDamaged = {0x02};
const Datagram kForeign = {0x03};  // And no IPMI message at all.

constexpr Patience kPatience = {milliseconds(1000), milliseconds(200), milliseconds(300)};

/// A message of that tag as it comes before a session is open, or within one.
Datagram Tagged(std::uint8_t tag, std::uint8_t sessionId = 0) {
  constexpr std::uint8_t openSessionResponse = 0x11;
  return {0x06, 0x00, 0xFF, 0x07, 0x06, openSessionResponse, sessionId, 0, 0, 0, 0, 0,
          0,    0,    1,    0,    tag};
}

Verdict JudgeByBytes(const Datagram& datagram) {
  return datagram == kAnswer    ? Verdict::Answer
         : datagram == kDamaged ? Verdict::Damaged
                                : Verdict::Foreign;
}

class ConversationTest : public testing::Test {
 protected:
  ConversationTest() {
    ScriptedNetwork::Reset();
    conversation.emplace("192.0.2.1", 623);
    conversation->BeginAttempt(kPatience);
  }

  /// Asks from time 0 on; `replies` come so many milliseconds after the first sending.
  Failure Ask(const std::vector<std::pair<int, Datagram>>& replies, Question question) {
    network.sent.clear();
    began = network.now;
    tag = conversation->NextTag();
    for (const auto& [delay, reply] : replies) {
      network.Deliver(milliseconds(delay), reply);
    }
    Failure failure = conversation->Ask(question);
    took = static_cast<int>((network.now - began).count());
    return failure;
  }

  Failure Ask(const std::vector<std::pair<int, Datagram>>& replies) {
    return Ask(replies, Plain());
  }

  Failure AskOpening(const std::vector<std::pair<int, Datagram>>& replies) {
    Question question = Plain();
    question.isOpening = true;
    return Ask(replies, question);
  }

  static Question Plain(Trouble silence = Trouble::NoAnswer) {
    Question question;
    question.make = [] { return kAsked; };
    question.judge = JudgeByBytes;
    question.silence = silence;
    return question;
  }

  /// When it was sent, in milliseconds after the first sending.
  std::vector<int> Sendings() const {
    std::vector<int> times;
    for (const ScriptedNetwork::Sent& sent : network.sent) {
      times.push_back(static_cast<int>((sent.at - began).count()));
      EXPECT_EQ(sent.datagram, kAsked);
    }
    return times;
  }

  int LongestRoundTrip() const {
    return static_cast<int>(conversation->LongestRoundTrip().count());
  }

  std::optional<Conversation> conversation;
  ScriptedNetwork::Time began{0};
  std::uint8_t tag = 0;
  int took = 0;
};

void ExpectTrouble(const Failure& failure, Trouble trouble) {
  EXPECT_EQ(failure.words, FailureOf(trouble).words);
}

void ExpectLate(const Failure& failure, int lateness) {
  EXPECT_EQ(failure.words, LateFailure(milliseconds(lateness)).words);
}

TEST_F(ConversationTest, TagsCountUpTo63AndBeginAnew) {
  for (int expected = 1; expected <= 63; ++expected) {
    EXPECT_EQ(conversation->NextTag(), expected);
  }
  EXPECT_EQ(conversation->NextTag(), 0);
  EXPECT_EQ(conversation->NextTag(), 1);
}

TEST_F(ConversationTest, QuestionIsRepeatedUntilTheTimeout) {
  ExpectTrouble(Ask({}), Trouble::NoAnswer);
  EXPECT_THAT(Sendings(), ElementsAre(0, 200, 400, 600, 800));
  EXPECT_EQ(took, 1000);
}

TEST_F(ConversationTest, OpeningQuestionHasAnIntervalOfItsOwn) {
  ExpectTrouble(AskOpening({}), Trouble::NoAnswer);
  EXPECT_THAT(Sendings(), ElementsAre(0, 300, 600, 900));
  EXPECT_EQ(took, 1000);
}

TEST_F(ConversationTest, IntervalsMayBeAsShortAsAMillisecond) {
  conversation->BeginAttempt({milliseconds(3), milliseconds(1), milliseconds(1)});
  Ask({});
  EXPECT_THAT(Sendings(), ElementsAre(0, 1, 2));
}

TEST_F(ConversationTest, AnswerEndsTheWaiting) {
  EXPECT_EQ(LongestRoundTrip(), 0);
  EXPECT_FALSE(Ask({{50, kAnswer}}));
  EXPECT_THAT(Sendings(), ElementsAre(0));
  EXPECT_EQ(took, 50);
  EXPECT_EQ(LongestRoundTrip(), 50);
}

TEST_F(ConversationTest, AnswerIsTakenBehindOthers) {
  EXPECT_FALSE(Ask({{10, kDamaged}, {20, kForeign}, {50, kAnswer}}));
  EXPECT_EQ(took, 50);
}

TEST_F(ConversationTest, PassingQuestionIsAskedTwiceAtMost) {
  conversation->AskInPassing(Plain());
  EXPECT_THAT(Sendings(), ElementsAre(0, 200));
  EXPECT_EQ(network.now, milliseconds(400));
}

TEST_F(ConversationTest, PassingQuestionEndsAtTheTimeoutToo) {
  conversation->BeginAttempt({milliseconds(300), milliseconds(200), milliseconds(200)});
  conversation->AskInPassing(Plain());
  EXPECT_THAT(Sendings(), ElementsAre(0, 200));
  EXPECT_EQ(network.now, milliseconds(300));
}

TEST_F(ConversationTest, PassingQuestionEndsWithItsAnswer) {
  network.Deliver(milliseconds(50), kAnswer);
  conversation->AskInPassing(Plain());
  EXPECT_EQ(network.now, milliseconds(50));
}

TEST_F(ConversationTest, SlowAnswerGivesTheNextQuestionTwiceAsLong) {
  Ask({{150, kAnswer}});
  Ask({});
  EXPECT_THAT(Sendings(), ElementsAre(0, 300, 600, 900));
}

TEST_F(ConversationTest, LatestRoundTripCountsAndTheLongestIsKept) {
  Ask({{150, kAnswer}});
  Ask({{10, kAnswer}});
  EXPECT_EQ(LongestRoundTrip(), 150);
  Ask({});
  EXPECT_THAT(Sendings(), ElementsAre(0, 200, 400, 600, 800));
}

TEST_F(ConversationTest, NextAttemptBeginsWithoutWhatWasMeasured) {
  Ask({{150, kAnswer}});
  conversation->BeginAttempt(kPatience);
  EXPECT_EQ(LongestRoundTrip(), 0);
  Ask({});
  EXPECT_THAT(Sendings(), ElementsAre(0, 200, 400, 600, 800));
}

TEST_F(ConversationTest, RepeatedQuestionIsTakenForLateOnceAndThenForLost) {
  Ask({{250, kAnswer}});
  EXPECT_THAT(Sendings(), ElementsAre(0, 200));
  EXPECT_FALSE(Ask({{600, kAnswer}}));
  EXPECT_THAT(Sendings(), ElementsAre(0, 500));
  Ask({{110, kAnswer}});
  EXPECT_THAT(Sendings(), ElementsAre(0));
  EXPECT_EQ(LongestRoundTrip(), 110);
}

TEST_F(ConversationTest, RepeatedQuestionThatWasTakenForLostLeavesTheUsualInterval) {
  Ask({{250, kAnswer}});
  Ask({{560, kAnswer}});
  EXPECT_EQ(LongestRoundTrip(), 0);
  Ask({});
  EXPECT_THAT(Sendings(), ElementsAre(0, 200, 400, 600, 800));
}

TEST_F(ConversationTest, RepeatedQuestionTellsNothingOnceARoundTripIsCertain) {
  Ask({{120, kAnswer}});
  Ask({{260, kAnswer}});
  EXPECT_THAT(Sendings(), ElementsAre(0, 240));
  EXPECT_EQ(LongestRoundTrip(), 120);
  Ask({});
  EXPECT_THAT(Sendings(), ElementsAre(0, 240, 480, 720, 960));
}

TEST_F(ConversationTest, SilenceIsTheTroubleOfItsQuestion) {
  ExpectTrouble(Ask({}, Plain(Trouble::SilentToRequest)), Trouble::SilentToRequest);
}

TEST_F(ConversationTest, DamagedAnswersOutweighForeignOnes) {
  ExpectTrouble(Ask({{10, kForeign}}), Trouble::OtherAnswer);
  ExpectTrouble(Ask({{10, kDamaged}}), Trouble::DamagedAnswer);
  ExpectTrouble(Ask({{10, kForeign}, {20, kDamaged}}), Trouble::DamagedAnswer);
  ExpectTrouble(Ask({}), Trouble::NoAnswer);
}

TEST_F(ConversationTest, DamagedAnswerIsNotAskedForItsTag) {
  Ask({});
  Question question = Plain();
  question.judge = [](const Datagram& /*datagram*/) { return Verdict::Damaged; };
  ExpectTrouble(Ask({{100, Tagged(1)}}, question), Trouble::DamagedAnswer);
}

TEST_F(ConversationTest, AnswerToAnEarlierQuestionShowsThatTheControllerIsLate) {
  Ask({});
  ExpectLate(Ask({{100, Tagged(1)}}), 1100);
}

TEST_F(ConversationTest, EarliestOfLateAnswersCounts) {
  Ask({});
  ExpectLate(Ask({{100, Tagged(1)}, {300, Tagged(1)}}), 1100);
  ExpectLate(Ask({{50, Tagged(2)}}), 1050);
  ExpectLate(Ask({{200, Tagged(3)}}), 1050);
}

TEST_F(ConversationTest, SecondCopyOfAnAnswerThatCameInTimeSaysNothing) {
  Ask({{400, kAnswer}});
  ExpectTrouble(Ask({{600, Tagged(1)}}), Trouble::NoAnswer);
  EXPECT_EQ(network.now, milliseconds(1400));
}

TEST_F(ConversationTest, AnswerToAnotherAttemptIsLateAsWell) {
  Ask({});
  conversation->BeginAttempt(kPatience);
  ExpectLate(Ask({{100, Tagged(1)}}), 1100);
}

TEST_F(ConversationTest, MessageThatIsOfNoEarlierQuestionIsForeign) {
  Ask({});
  for (const Datagram& foreign :
       {Tagged(40), Tagged(64), Tagged(255), Tagged(1, 1), Tagged(1, 7)}) {
    ExpectTrouble(Ask({{100, foreign}}), Trouble::OtherAnswer);
  }
  ExpectTrouble(Ask({{100, Tagged(static_cast<std::uint8_t>(tag + 1))}}), Trouble::OtherAnswer);
}

TEST_F(ConversationTest, WordOfTheNetworkCountsWhereNothingElseCame) {
  network.Deliver(milliseconds(10), {}, ECONNREFUSED);
  ExpectTrouble(Ask({}), Trouble::PortClosed);
  EXPECT_EQ(took, 1000);
  ExpectTrouble(Ask({}), Trouble::NoAnswer);
  network.Deliver(milliseconds(10), {}, ECONNREFUSED);
  ExpectTrouble(Ask({}, Plain(Trouble::SilentToRequest)), Trouble::SilentToRequest);
  network.Deliver(milliseconds(10), {}, ECONNREFUSED);
  ExpectTrouble(Ask({{20, kForeign}}), Trouble::OtherAnswer);
}

TEST_F(ConversationTest, ErrorOfThisMachineEndsTheWaiting) {
  network.Deliver(milliseconds(10), {}, ENOBUFS);
  ExpectTrouble(Ask({}), Trouble::ResourcesShort);
  EXPECT_EQ(took, 10);
  network.sendError = EMSGSIZE;
  ExpectTrouble(Ask({{10, kAnswer}}), Trouble::RequestTooLong);
  EXPECT_EQ(took, 0);
}

TEST_F(ConversationTest, QuestionThatCannotBeMadeIsForWantOfMemory) {
  Question question = Plain();
  question.make = [] { return Datagram(); };
  ExpectTrouble(Ask({{10, kAnswer}}, question), Trouble::ResourcesShort);
  EXPECT_THAT(Sendings(), ElementsAre());
  EXPECT_EQ(took, 0);
}

TEST_F(ConversationTest, WithoutASocketNothingIsAsked) {
  EXPECT_TRUE(conversation->IsOpen());
  network.connectError = EACCES;
  conversation.emplace("192.0.2.1", 623);
  EXPECT_FALSE(conversation->IsOpen());
  conversation->BeginAttempt(kPatience);
  ExpectTrouble(Ask({}), Trouble::NotPermitted);
  EXPECT_THAT(Sendings(), ElementsAre());
}

TEST_F(ConversationTest, MachineThatPausesBetweenTwoLooksAtTheClockDoesNotWaitForEver) {
  network.perLook = milliseconds(7);
  ExpectTrouble(Ask({}), Trouble::NoAnswer);
  EXPECT_LT(took, 1100);
}

TEST_F(ConversationTest, RefusedDatagramIsSentOnceMore) {
  network.sendError = ECONNREFUSED;
  UdpSocket socket("192.0.2.1", 623);
  EXPECT_EQ(socket.Send(kAsked), ECONNREFUSED);
  EXPECT_EQ(socket.PeerError(), ECONNREFUSED);
  EXPECT_EQ(network.sent.size(), 2U);
}

TEST_F(ConversationTest, DatagramWithoutRoomToSendItCountsAsLost) {
  network.sendError = EAGAIN;
  UdpSocket socket("192.0.2.1", 623);
  EXPECT_EQ(socket.Send(kAsked), 0);
  EXPECT_EQ(network.sent.size(), 1U);
}

TEST_F(ConversationTest, EmptyDatagramIsSentLikeAnyOther) {
  UdpSocket socket("192.0.2.1", 623);
  errno = ENOMEM;
  EXPECT_EQ(socket.Send({}), 0);
}

TEST_F(ConversationTest, WhatIsToldIsSentOnce) {
  conversation->Tell(kAsked);
  EXPECT_THAT(Sendings(), ElementsAre(0));
  EXPECT_EQ(network.now, milliseconds(0));
}

}  // namespace
}  // namespace Tavrin::Standalone
