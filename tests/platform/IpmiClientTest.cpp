#include "platform/IpmiClient.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "tests/platform/LogCapture.h"
#include "tests/platform/ScopedEnvironment.h"
#include "tests/support/UdpPort.h"

namespace Tavrin {
namespace {

namespace ConnectResult = Standalone::ConnectResult;
using Standalone::FailureCause;
using std::chrono::milliseconds;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

struct Arguments {
  std::string address = "127.0.0.1";
  std::string userName = "operator";
  std::string password = "swordfish";
  std::string port = "623";
  unsigned long cipherSuite = 3;
};

/// The result of one connect(), the one line that it wrote, and the cause that can be asked for.
struct Outcome {
  int result;
  std::string text;
  FailureCause cause;
};

Outcome Connect(const Arguments& arguments) {
  const LogCapture capture(2);
  IpmiClient client(arguments.address, arguments.userName, arguments.password, arguments.port,
                    arguments.cipherSuite);
  const int result = client.connect();
  EXPECT_THAT(capture.lines, SizeIs(1));
  EXPECT_EQ(capture.lines.at(0).level, 2U);
  EXPECT_EQ(capture.lines.at(0).source, "platform/standalone/ipmi_client/IpmiClient");
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  EXPECT_EQ(exchange.result, result);
  EXPECT_EQ(exchange.connectionAttempts, 1);
  EXPECT_THAT(capture.lines.at(0).text, HasSubstr(": " + exchange.words));
  return {result, capture.lines.at(0).text, exchange.cause};
}

TEST(IpmiClientArguments, UserNameOverSixteenBytesIsRefused) {
  Arguments arguments;
  arguments.userName = std::string(17, 'u');
  const Outcome outcome = Connect(arguments);
  EXPECT_EQ(outcome.result, ConnectResult::ArgumentTooLong);
  EXPECT_EQ(outcome.cause, FailureCause::BadSetting);
  EXPECT_EQ(outcome.text,
            "connect failed: host 127.0.0.1, port 623, user \"uuuuuuuuuuuuuuuuu\": the user name "
            "has 17 bytes; expected at most 16");
}

TEST(IpmiClientArguments, PasswordOverTwentyBytesIsRefusedAndNotShown) {
  Arguments arguments;
  arguments.password = std::string(21, 'p');
  const Outcome outcome = Connect(arguments);
  EXPECT_EQ(outcome.result, ConnectResult::ArgumentTooLong);
  EXPECT_EQ(outcome.cause, FailureCause::BadSetting);
  EXPECT_THAT(outcome.text, AllOf(HasSubstr("the password has 21 bytes; expected at most 20"),
                                  Not(HasSubstr("ppp"))));
}

TEST(IpmiClientArguments, ZeroByteInACredentialIsRefused) {
  Arguments inUserName;
  inUserName.userName = std::string("oper\0tor", 8);
  Arguments inPassword;
  inPassword.password = std::string("sword\0fish", 10);
  for (const Arguments& arguments : {inUserName, inPassword}) {
    const Outcome outcome = Connect(arguments);
    EXPECT_EQ(outcome.result, ConnectResult::InvalidSetting);
    EXPECT_EQ(outcome.cause, FailureCause::BadSetting);
    EXPECT_THAT(outcome.text,
                EndsWith(": the user name or the password holds a zero byte, which IPMI cannot "
                         "carry"));
  }
}

TEST(IpmiClientArguments, HostThatDoesNotResolveIsABadHostName) {
  for (const std::string& host : {std::string(), std::string("127.0.0.1\0x", 11)}) {
    Arguments arguments;
    arguments.address = host;
    const Outcome outcome = Connect(arguments);
    EXPECT_EQ(outcome.result, ConnectResult::BadHostName) << host;
    EXPECT_EQ(outcome.cause, FailureCause::HostName) << host;
    EXPECT_THAT(outcome.text, HasSubstr("the host name does not resolve")) << host;
  }
}

TEST(IpmiClientArguments, PortThatIsNoPortIsRefused) {
  for (const char* port : {"", "0", "65536", "-623", "+623", "0x26f", "623 ", "ipmi"}) {
    Arguments arguments;
    arguments.port = port;
    const Outcome outcome = Connect(arguments);
    EXPECT_EQ(outcome.result, ConnectResult::InvalidSetting) << port;
    EXPECT_THAT(outcome.text, HasSubstr(std::string("the port is \"") + port +
                                        "\"; expected a whole number from 1 to 65535"));
  }
}

TEST(IpmiClientArguments, UnknownCipherSuiteIsRefused) {
  for (const unsigned long suite : {4UL, 5UL, 18UL, 259UL, ~0UL}) {
    Arguments arguments;
    arguments.cipherSuite = suite;
    const Outcome outcome = Connect(arguments);
    EXPECT_EQ(outcome.result, ConnectResult::InvalidSetting) << suite;
    EXPECT_THAT(outcome.text, HasSubstr("the cipher suite is \"" + std::to_string(suite) +
                                        "\"; expected one of"));
  }
}

TEST(IpmiClientArguments, SettingOutOfRangeIsRefusedByName) {
  const ScopedEnvironment variable("IPMI_PRIVILEGE_LEVEL", "9");
  const Outcome outcome = Connect({});
  EXPECT_EQ(outcome.result, ConnectResult::InvalidSetting);
  EXPECT_THAT(outcome.text,
              HasSubstr("IPMI_PRIVILEGE_LEVEL is \"9\"; expected a whole number from 2 to 4"));
}

TEST(IpmiClientArguments, NothingIsWrittenBelowTheWarningThreshold) {
  const LogCapture capture(1);
  IpmiClient client("", "operator", "swordfish", "623", 3);
  EXPECT_EQ(client.connect(), ConnectResult::BadHostName);
  EXPECT_THAT(capture.lines, SizeIs(0));
}

/// Connects to `port` of 127.0.0.1 and expects the time-out at 500 ms, neither earlier nor with the
/// next repetition.
void ExpectTimeout(const std::string& port, FailureCause cause, const std::string& words) {
  const ScopedEnvironment session("IPMI_SESSION_TIMEOUT_MS", "500");
  Arguments arguments;
  arguments.port = port;
  const auto before = std::chrono::steady_clock::now();
  const Outcome outcome = Connect(arguments);
  const auto elapsed = std::chrono::steady_clock::now() - before;
  EXPECT_EQ(outcome.result, ConnectResult::WorthRetrying);
  EXPECT_EQ(outcome.cause, cause);
  EXPECT_THAT(outcome.text, AllOf(HasSubstr("host 127.0.0.1, port " + port +
                                            ", user \"operator\": " + words + "; check"),
                                  Not(HasSubstr("swordfish"))));
  EXPECT_GE(elapsed, milliseconds(500));
  EXPECT_LT(elapsed, milliseconds(1500));
}

TEST(IpmiClientTimeout, SilentControllerIsNoticedAtTheSessionTimeout) {
  const UdpPort port;
  ExpectTimeout(port.Text(), FailureCause::Silence, "no answer within the session time-out");
}

TEST(IpmiClientTimeout, ClosedPortIsNoticedAtTheSessionTimeout) {
  UdpPort port;
  port.Refuse();
  ExpectTimeout(port.Text(), FailureCause::Unreachable,
                "no answer within the session time-out: nobody listens at the port");
}

TEST(IpmiClientTimeout, AddressThatMayNotBeSentToIsNoticedAtOnce) {
  Arguments arguments;
  arguments.address = "255.255.255.255";
  const Outcome outcome = Connect(arguments);
  EXPECT_EQ(outcome.result, ConnectResult::Failed);
  EXPECT_EQ(outcome.cause, FailureCause::Forbidden);
}

TEST(IpmiClientTimeout, ShortSessionTimeoutNeedsNoOtherSetting) {
  const ScopedEnvironment session("IPMI_SESSION_TIMEOUT_MS", "300");
  const UdpPort port;
  Arguments arguments;
  arguments.port = port.Text();
  EXPECT_EQ(Connect(arguments).result, ConnectResult::WorthRetrying);
}

TEST(IpmiClientTimeout, LineShowsTheAddressThatANameResolvedTo) {
  const ScopedEnvironment session("IPMI_SESSION_TIMEOUT_MS", "100");
  const UdpPort port;
  Arguments arguments;
  arguments.address = "localhost";
  arguments.port = port.Text();
  EXPECT_THAT(Connect(arguments).text,
              testing::ContainsRegex("host localhost \\((127\\.0\\.0\\.1|::1)\\), port"));
}

TEST(IpmiClientSend, WithoutConnectionFailsWithEmptyAnswer) {
  const LogCapture capture(2);
  IpmiClient client("127.0.0.1", "operator", "swordfish", "623", 3);
  std::vector<std::uint8_t> response = {1, 2, 3};
  std::uint8_t completionCode = 0;
  EXPECT_EQ(client.send({0xA8, {}, 0x32}, response, completionCode), ConnectResult::Failed);
  EXPECT_THAT(response, SizeIs(0));
  EXPECT_EQ(completionCode, 0xFF);
  ASSERT_THAT(capture.lines, SizeIs(1));
  EXPECT_EQ(capture.lines[0].text,
            "send of network function 0x32 command 0xa8 failed: host 127.0.0.1, port 623, user "
            "\"operator\": no session is open; connect first");
}

TEST(IpmiClientDisconnect, WithoutConnectionDoesNoHarm) {
  const LogCapture capture;
  IpmiClient client("127.0.0.1", "operator", "swordfish", "623", 3);
  EXPECT_EQ(client.disconnect(), 0);
  EXPECT_EQ(client.disconnect(), 0);
  EXPECT_THAT(capture.lines, SizeIs(0));
}

}  // namespace
}  // namespace Tavrin
