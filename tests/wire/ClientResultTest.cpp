#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {
namespace {

namespace ConnectResult = Standalone::ConnectResult;
using ::testing::AllOf;
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

  void ExpectOneLine(const std::string& userName, const std::string& cause) {
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines.front().level, 2U);
    EXPECT_THAT(lines.front().text,
                AllOf(HasSubstr(simulator->Host()), HasSubstr(std::to_string(simulator->Port())),
                      HasSubstr(userName), HasSubstr(cause), Not(HasSubstr("sesame"))));
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
}

TEST_F(ClientResult, WrongUserIsRefused) {
  EXPECT_EQ(Client("nobody", "sesame").connect(), ConnectResult::UserNameRefused);
  ExpectOneLine("nobody", "the controller does not know the user");
}

TEST_F(ClientResult, WrongPasswordIsRefused) {
  EXPECT_EQ(Client("admin", "sesame2").connect(), ConnectResult::PasswordRefused);
  ExpectOneLine("admin", "the password does not match");
}

TEST_F(ClientResult, RefusedSuiteIsWorthRetrying) {
  EXPECT_EQ(Client("admin", "sesame", 17).connect(), ConnectResult::WorthRetrying);
  ExpectOneLine("admin",
                "the controller does not allow the cipher suite; try another "
                "(IPMI_CIPHER_SUITE)");
}

TEST_F(ClientResult, ConfiguredSuiteWinsOverTheFifthArgument) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 3);
  EXPECT_EQ(Client("admin", "sesame", 17).connect(), ConnectResult::Connected);
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", -1);
}

TEST_F(ClientResult, RefusedPrivilegeIsTold) {
  // Without the workaround the simulator takes the level asked for as one that it may not grant.
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 0);
  EXPECT_EQ(Client("admin", "sesame").connect(), ConnectResult::PrivilegeRefused);
  ExpectOneLine("admin", "privilege level");
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
