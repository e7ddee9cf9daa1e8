#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/unit/InventoryTest.h"

namespace Tavrin::Double {
namespace {

/// What holds for every operation alike, with every SMM type, whatever was asked.
class AnyAnswer : public InventoryTest,
                  public testing::WithParamInterface<std::tuple<std::string, int>> {
 protected:
  AnyAnswer() { inventory.smmType = static_cast<SMMIype>(std::get<1>(GetParam())); }

  static Exchange Answering(const Bytes& response, std::uint8_t completionCode,
                            Filling filling = Filling::Replaces) {
    Exchange exchange;
    exchange.response = response;
    exchange.completionCode = completionCode;
    exchange.filling = filling;
    return exchange;
  }

  void Repeat(const Exchange& exchange) {
    platform.improvise = [exchange] { return exchange; };
  }

  /// The answers that follow the next one.
  Exchange FollowedBy(Exchange exchange, const Exchange& following) {
    exchange.onRequest = [this, following](Exchange&) { Repeat(following); };
    return exchange;
  }

  /// Everything that the operation gives when the SMM answers any request so: status and output,
  /// lines, and how often it sent and paused.
  std::string Run(const Exchange& exchange) {
    platform.ForgetWhatHappened();
    Repeat(exchange);
    std::string text = Ask(std::get<0>(GetParam()), 1);
    for (const Line& line : platform.lines) {
      text += line.text + '\n';
    }
    return text +
           std::to_string(std::count(platform.events.begin(), platform.events.end(), "send")) +
           " sent, " + std::to_string(platform.pauses.size()) + " pauses";
  }
};

/// Letters and digits, then zeros.
Bytes LongAnswer(std::size_t length) {
  Bytes answer = {'A', '1', 'b', '2', 'C', '3', 'd', '4', 'E', '5', 'f', '6', 'G', '7', 'h', '8'};
  answer.resize(length);
  return answer;
}

TEST_P(AnyAnswer, IsJudgedAlikeAtEveryLengthBeyondTheLongest) {
  platform.logThreshold = 2;
  const std::string expected = Run(Answering(LongAnswer(64), 0));
  for (std::size_t length = 256; length <= 275; ++length) {
    EXPECT_EQ(Run(Answering(LongAnswer(length), 0)), expected) << length << " bytes";
  }
}

using AnyAnswerOfItsOwn = AnyAnswer;

TEST_P(AnyAnswerOfItsOwn, IsEmptyWithCode0BeforeTheClientFillsIt) {
  const Exchange refused = Answering(LongAnswer(20), 0xC1);
  const Exchange untouched = Answering(LongAnswer(20), 0xC1, Filling::LeavesAlone);
  const Exchange empty = Answering({}, 0x00);
  const std::string expected = Run(empty);
  Run(refused);
  EXPECT_EQ(Run(untouched), expected);
  EXPECT_EQ(Run(FollowedBy(refused, untouched)), Run(FollowedBy(refused, empty)));
}

/// Without those that hand one answer from attempt to attempt.
std::vector<std::string> NamesOfThoseThatSendOnce() {
  std::vector<std::string> names = OperationNames();
  const auto sendsAgain = [](const std::string& name) {
    return OperationNamed<Implementation>(name).exchanges.untilAcknowledged;
  };
  names.erase(std::remove_if(names.begin(), names.end(), sendsAgain), names.end());
  return names;
}

std::string NameOfOperationAndSmmType(
    const testing::TestParamInfo<std::tuple<std::string, int>>& info) {
  return std::get<0>(info.param) + "OfSmmType" + std::to_string(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Operation, AnyAnswer,
                         testing::Combine(testing::ValuesIn(OperationNames()),
                                          testing::Values(0, 1, 7)),
                         NameOfOperationAndSmmType);

INSTANTIATE_TEST_SUITE_P(Operation, AnyAnswerOfItsOwn,
                         testing::Combine(testing::ValuesIn(NamesOfThoseThatSendOnce()),
                                          testing::Values(0, 1, 7)),
                         NameOfOperationAndSmmType);

}  // namespace
}  // namespace Tavrin::Double
