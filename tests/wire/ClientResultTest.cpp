#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {
namespace {

namespace ConnectResult = Standalone::ConnectResult;
using Standalone::FailureCause;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using Bytes = std::vector<std::uint8_t>;

/// What a client gives against a live controller, of which one serves all these tests.
class ClientResult : public WireTest {
 protected:
  static void SetUpTestSuite() {
    simulator = std::make_unique<SimulatedSmm>(std::vector<std::string>{"--generation", "1"});
  }
  static void TearDownTestSuite() { simulator.reset(); }

  IpmiClient Client(const std::string& userName, const std::string& password,
                    unsigned long cipherSuite = 3) {
    return IpmiClient(simulator->Host(), userName, password, std::to_string(simulator->Port()),
                      cipherSuite);
  }

  /// One line, and the same to be asked for.
  void ExpectOneLine(const std::string& userName, FailureCause cause, const std::string& words,
                     const std::string& advice) {
    EXPECT_EQ(Standalone::GetLastExchange().cause, cause);
    EXPECT_EQ(Standalone::GetLastExchange().words, words);
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines.front().level, 2U);
    EXPECT_THAT(lines.front().text,
                AllOf(HasSubstr(simulator->Host()), HasSubstr(std::to_string(simulator->Port())),
                      HasSubstr(userName), EndsWith(": " + words + "; " + advice),
                      Not(HasSubstr("sesame"))));
  }

  static std::unique_ptr<SimulatedSmm> simulator;
};

std::unique_ptr<SimulatedSmm> ClientResult::simulator;

IPMICOMMAND MachineTypeRequest() {
  IPMICOMMAND request;
  request.netFn = 0x32;
  request.cmd = 0xB0;
  request.data = {0x05, 0x00};
  return request;
}

TEST_F(ClientResult, RightCredentialsConnectAndExchange) {
  IpmiClient client = Client("admin", "sesame");
  Bytes response = {0xAA};
  std::uint8_t completionCode = 0x77;
  EXPECT_EQ(client.connect(), ConnectResult::Connected);
  EXPECT_EQ(client.send(MachineTypeRequest(), response, completionCode), 0);
  EXPECT_EQ(completionCode, 0);
  EXPECT_EQ(std::string(response.begin(), response.begin() + 4), "1QA4");
  EXPECT_EQ(client.disconnect(), 0);
  EXPECT_THAT(lines, IsEmpty());
}

TEST_F(ClientResult, RefusedRequestIsAnAnswerWithoutData) {
  IpmiClient client = Client("admin", "sesame");
  IPMICOMMAND request = MachineTypeRequest();
  request.cmd = 0x01;
  Bytes response = {0xAA};
  std::uint8_t completionCode = 0;
  ASSERT_EQ(client.connect(), ConnectResult::Connected);
  EXPECT_EQ(client.send(request, response, completionCode), 0);
  EXPECT_EQ(completionCode, 0xC1);
  EXPECT_THAT(response, IsEmpty());
  EXPECT_EQ(Standalone::GetLastExchange().cause, FailureCause::None);
  EXPECT_TRUE(Standalone::GetLastExchange().isAnswered);
  EXPECT_EQ(Standalone::GetLastExchange().completionCode, 0xC1);
  EXPECT_EQ(Standalone::GetLastExchange().answerLength, 0U);
}

TEST_F(ClientResult, RequestThatIsNoneIsRefusedInWords) {
  IpmiClient client = Client("admin", "sesame");
  ASSERT_EQ(client.connect(), ConnectResult::Connected);
  Bytes response;
  std::uint8_t completionCode = 0;
  EXPECT_EQ(client.send({0xB0, {}, 0x33}, response, completionCode), ConnectResult::Failed);
  EXPECT_EQ(Standalone::GetLastExchange().cause, FailureCause::BadSetting);
  EXPECT_EQ(Standalone::GetLastExchange().words,
            "the network function is 0x33; expected an even one up to 0x0c, or from 0x2c to 0x3e");
  EXPECT_EQ(client.send({0xB0, Bytes(65001), 0x32}, response, completionCode),
            ConnectResult::Failed);
  EXPECT_EQ(Standalone::GetLastExchange().words,
            "the request has 65001 data bytes; expected at most 65000");
  EXPECT_FALSE(Standalone::GetLastExchange().isAnswered);
}

TEST_F(ClientResult, ClientThatNeverConnectsHasMadeNoAttempt) {
  const IpmiClient client = Client("admin", "sesame");
  EXPECT_EQ(Standalone::GetLastExchange().cause, FailureCause::NoAttempt);
  EXPECT_EQ(Standalone::GetLastExchange().connectionAttempts, 0);
  EXPECT_EQ(Standalone::GetLastExchange().words, "no attempt to connect was made");
  EXPECT_EQ(Standalone::GetLastExchange().host, simulator->Host());
}

TEST_F(ClientResult, WrongUserIsRefused) {
  EXPECT_EQ(Client("nobody", "sesame").connect(), ConnectResult::UserNameRefused);
  ExpectOneLine("nobody", FailureCause::UserNameRefused, "the controller does not know the user",
                "check the user name");
}

TEST_F(ClientResult, WrongPasswordIsRefused) {
  EXPECT_EQ(Client("admin", "sesame2").connect(), ConnectResult::PasswordRefused);
  ExpectOneLine("admin", FailureCause::PasswordRefused, "the password does not match",
                "check it, or set IPMI_WORKAROUND_FLAGS to 16 for a controller that computes its "
                "proof with the level given when the session opens");
}

TEST_F(ClientResult, RefusedSuiteIsWorthRetrying) {
  EXPECT_EQ(Client("admin", "sesame", 17).connect(), ConnectResult::WorthRetrying);
  ExpectOneLine("admin", FailureCause::SuiteRefused,
                "the controller does not allow the cipher suite",
                "try another (IPMI_CIPHER_SUITE)");
}

// RMCP+ with every combination of algorithms that the simulator has.
class EverySuite : public ClientResult, public testing::WithParamInterface<unsigned long> {};

TEST_P(EverySuite, ConnectsAndExchanges) {
  IpmiClient client = Client("admin", "sesame", GetParam());
  Bytes response;
  std::uint8_t completionCode = 0xFF;
  ASSERT_EQ(client.connect(), ConnectResult::Connected);
  EXPECT_EQ(client.send(MachineTypeRequest(), response, completionCode), 0);
  EXPECT_EQ(std::string(response.begin(), response.begin() + 4), "1QA4");
  EXPECT_EQ(Client("admin", "sesame2", GetParam()).connect(),
            GetParam() == 0 ? ConnectResult::Connected : ConnectResult::PasswordRefused);
}

INSTANTIATE_TEST_SUITE_P(CipherSuites, EverySuite, testing::Values(0, 1, 2, 3, 6, 11),
                         testing::PrintToStringParamName());

TEST_F(ClientResult, ConfiguredSuiteWinsOverTheFifthArgument) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 3);
  EXPECT_EQ(Client("admin", "sesame", 17).connect(), ConnectResult::Connected);
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", -1);
}

TEST_F(ClientResult, RefusedPrivilegeIsTold) {
  // Without the workaround the simulator takes the level asked for as one that it may not grant.
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 0);
  EXPECT_EQ(Client("admin", "sesame").connect(), ConnectResult::PrivilegeRefused);
  ExpectOneLine("admin", FailureCause::PrivilegeRefused,
                "the controller does not grant the privilege level",
                "ask for a lower one (IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator), "
                "or set IPMI_WORKAROUND_FLAGS to 16 for a controller that takes the level only "
                "when the session opens");
}

TEST_F(ClientResult, ControllerGoneBeforeTheRequestIsAFailedSendWithoutAnAnswer) {
  auto mortal = std::make_unique<SimulatedSmm>(std::vector<std::string>{"--generation", "1"});
  IpmiClient client(mortal->Host(), "admin", "sesame", std::to_string(mortal->Port()), 3);
  ASSERT_EQ(client.connect(), ConnectResult::Connected);
  mortal.reset();
  Bytes response = {0xAA};
  std::uint8_t completionCode = 0;
  EXPECT_EQ(client.send(MachineTypeRequest(), response, completionCode),
            ConnectResult::WorthRetrying);
  EXPECT_THAT(response, IsEmpty());
  EXPECT_EQ(completionCode, 0xFF);
  EXPECT_THAT(lines, SizeIs(1));
}

TEST_F(ClientResult, OldAnswerIsNotTakenWhenTheNumberOfItsRequestComesAgain) {
  constexpr int kNumbers = 64;
  Relay relay(simulator->Port());
  IpmiClient client("127.0.0.1", "admin", "sesame", std::to_string(relay.Port()), 3);
  ASSERT_EQ(client.connect(), ConnectResult::Connected);
  Bytes response;
  std::uint8_t completionCode = 0;
  Datagram first;
  relay.Break(At(Answer::WithinSession, [&first](const Datagram& answer) {
    first = answer;
    return Departures{{answer}};
  }));
  ASSERT_EQ(client.send(MachineTypeRequest(), response, completionCode), 0);
  relay.Heal();
  for (int number = 1; number < kNumbers; ++number) {
    ASSERT_EQ(client.send(MachineTypeRequest(), response, completionCode), 0);
  }
  relay.Break(At(Answer::WithinSession, [&first](const Datagram&) { return Departures{{first}}; }));
  EXPECT_EQ(client.send(MachineTypeRequest(), response, completionCode),
            ConnectResult::WorthRetrying);
  relay.Heal();
}

TEST_F(ClientResult, SessionsAreClosedOnEveryPathSoThatTheyNeverRunOut) {
  // The simulator has room for 63 sessions.
  Bytes response;
  std::uint8_t completionCode = 0;
  for (int i = 0; i < 80; ++i) {
    IpmiClient client = Client("admin", "sesame");
    ASSERT_EQ(client.connect(), ConnectResult::Connected) << "session " << i;
    ASSERT_EQ(client.connect(), ConnectResult::Connected) << "session " << i << " again";
    client.send(MachineTypeRequest(), response, completionCode);
  }
}

}  // namespace
}  // namespace Tavrin
