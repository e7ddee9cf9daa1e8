#include "platform/standalone/ipmi_client/ConnectPresence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/ThreadDeadline.h"
#include "tests/platform/LogCapture.h"
#include "tests/support/UdpPort.h"
#include "tests/support/UdpResponder.h"

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;
using testing::IsEmpty;
using testing::SizeIs;

/// What a busy machine may add.
constexpr milliseconds kAllowance{700};

class ConnectPresence : public testing::Test {
 protected:
  LastExchange Ask(std::uint16_t port, const std::string& host = "127.0.0.1") {
    const auto begin = std::chrono::steady_clock::now();
    LastExchange exchange = AskPresence(host, port);
    took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
    return exchange;
  }

  void ExpectTook(milliseconds time) const {
    EXPECT_GE(took, time);
    EXPECT_LT(took, time + kAllowance);
  }

  const LogCapture log;
  milliseconds took{0};
};

void ExpectFailure(const LastExchange& exchange, FailureCause cause, const std::string& words) {
  EXPECT_EQ(exchange.cause, cause);
  EXPECT_EQ(exchange.words, words);
  EXPECT_NE(exchange.result, ConnectResult::Connected);
}

TEST_F(ConnectPresence, AnswerToThePingAloneIsEnough) {
  const UdpResponder responder(AnswerPing);
  const LastExchange exchange = Ask(responder.Port());
  EXPECT_EQ(exchange.cause, FailureCause::None);
  EXPECT_EQ(exchange.result, ConnectResult::Connected);
  EXPECT_EQ(exchange.words, "");
  ExpectTook(milliseconds(0));
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ConnectPresence, AnswerToTheCapabilitiesAloneIsEnoughWhateverItSays) {
  const UdpResponder responder(RefuseCapabilities);
  EXPECT_EQ(Ask(responder.Port()).cause, FailureCause::None);
  ExpectTook(milliseconds(0));
}

TEST_F(ConnectPresence, AnswerToTheSecondTryIsTaken) {
  const UdpResponder responder([](const UdpResponder::Bytes& datagram) {
    constexpr std::size_t tagAt = 9;
    return datagram.at(tagAt) == 2 ? AnswerPing(datagram) : UdpResponder::Bytes();
  });
  EXPECT_EQ(Ask(responder.Port()).cause, FailureCause::None);
  ExpectTook(milliseconds(1000));
}

TEST_F(ConnectPresence, NetworksWordIsTakenAfterTheSecondTry) {
  UdpPort port;
  port.Refuse();
  ExpectFailure(Ask(port.Number()), FailureCause::Unreachable, "nobody listens at the port");
  ExpectTook(milliseconds(1000));
}

TEST_F(ConnectPresence, HostNameThatDoesNotResolveFailsAtOnce) {
  const LastExchange exchange = Ask(623, "no such host");
  EXPECT_EQ(exchange.cause, FailureCause::HostName);
  EXPECT_EQ(exchange.result, ConnectResult::BadHostName);
}

TEST_F(ConnectPresence, FailureIsALineThatNamesHostPortAndCause) {
  Ask(623, "");
  ASSERT_THAT(log.lines, SizeIs(1));
  EXPECT_EQ(log.lines[0].level, LogLevel::Warning);
  EXPECT_EQ(log.lines[0].source, "platform/standalone/ipmi_client/ConnectPresence");
  EXPECT_EQ(log.lines[0].text,
            "asking for presence failed: host , port 623: the host name does not resolve (it is "
            "empty); check it, or give the address");
}

TEST_F(ConnectPresence, FailureIsALineFromWarningsOn) {
  SetMinLogLevel(LogLevel::Error);
  Ask(623, "");
  EXPECT_THAT(log.lines, IsEmpty());
  SetMinLogLevel(LogLevel::Warning);
  Ask(623, "");
  EXPECT_THAT(log.lines, SizeIs(1));
}

TEST_F(ConnectPresence, EndsAtTheDeadlineOfTheThread) {
  const UdpPort silent;
  const ThreadDeadline deadline(std::chrono::steady_clock::now() + milliseconds(200));
  ExpectFailure(Ask(silent.Number()), FailureCause::TimeOver,
                "the time given for this enclosure is over");
  EXPECT_GE(took, milliseconds(190));
  EXPECT_LT(took, milliseconds(200) + kAllowance);
  ExpectFailure(Ask(silent.Number(), "no such host"), FailureCause::TimeOver,
                "the time given for this enclosure is over");
}

TEST_F(ConnectPresence, EndsWhenExchangesAreStopped) {
  const UdpPort silent;
  std::thread stopper([] {
    std::this_thread::sleep_for(milliseconds(200));
    StopExchanges();
  });
  const LastExchange exchange = Ask(silent.Number());
  stopper.join();
  AllowExchanges();
  ExpectFailure(exchange, FailureCause::Stopped, "stopped");
  ExpectTook(milliseconds(150));
}

}  // namespace
}  // namespace Tavrin::Standalone
