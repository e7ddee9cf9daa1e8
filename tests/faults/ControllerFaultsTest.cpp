#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/faults/FaultTest.h"
#include "tests/simulator/RawSession.h"
#include "tests/support/Ipv6Test.h"
#include "tests/support/UdpPort.h"

namespace Tavrin {
namespace {

using ControllerFault = FaultTest;
using ControllerFaultOnIpv6 = Ipv6Test<FaultTest>;

TEST_F(ControllerFault, KilledInTheMiddleOfASessionIsAnUnusableAnswerUntilItIsBack) {
  relay.Break(SilenceAfter(5, [this] { simulator.reset(); }));
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend});
  relay.Heal();
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  RestartController();
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFault, KilledWhileTheSessionOpensIsNotConnectedUntilItIsBack) {
  relay.Break(SilenceAfter(2, [this] { simulator.reset(); }));
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  RestartController();
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFault, CompletionCodeWithoutDataIsAnUnusableAnswer) {
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSessionTimeout}, &SMMInventory::GetSmmSN);
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFault, SilenceToOneRequestIsAnUnusableAnswer) {
  ExpectQuery({StatusCode::UnusableAnswer, 0, kSilentSend}, &SMMInventory::GetSmmName);
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFault, AllSessionsTakenIsNotConnectedUntilOneIsFree) {
  constexpr int kRoom = 63;
  std::vector<std::unique_ptr<Simulator::RawSession>> sessions;
  for (int i = 0; i < kRoom; ++i) {
    sessions.push_back(std::make_unique<Simulator::RawSession>(simulator->Address()));
  }
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  sessions.pop_back();
  ExpectRecovery();
  sessions.clear();
  ExpectNoSession();
}

TEST_F(ControllerFault, WrongUserIsTriedOnce) {
  TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator);
  settings.userName = "nobody";
  SMMInventory wrong = Unread(settings);
  ExpectQuery(wrong, {StatusCode::NotConnected, 1, kSessionTimeout});
  ExpectRecovery();
}

TEST_F(ControllerFault, WrongPasswordIsTriedOnce) {
  TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator);
  settings.password = "sesame2";
  SMMInventory wrong = Unread(settings);
  ExpectQuery(wrong, {StatusCode::NotConnected, 1, kSessionTimeout});
  ExpectRecovery();
}

TEST_F(ControllerFault, RefusedSuiteIsTriedAgain) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 17);
  const std::size_t before = relay.SessionsAskedFor();
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  EXPECT_EQ(relay.SessionsAskedFor() - before, std::size_t{kAttempts});
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 3);
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFault, NameThatDoesNotResolveIsTriedOnce) {
  TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator);
  settings.address = "two words";
  SMMInventory unresolved = Unread(settings);
  ExpectQuery(unresolved, {StatusCode::NotConnected, 1, kSessionTimeout});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFault, ClosedPortIsNotConnectedAfterEveryAttempt) {
  UdpPort closed;
  closed.Refuse();
  TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator);
  settings.port = closed.Number();
  SMMInventory unheard = Unread(settings);
  ExpectQuery(unheard, {StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
  ExpectNoSession();
}

TEST_F(ControllerFaultOnIpv6, ClosedPortIsNotConnectedAfterEveryAttempt) {
  UdpPort closed("::1");
  closed.Refuse();
  TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator);
  settings.address = "::1";
  settings.port = closed.Number();
  SMMInventory unheard = Unread(settings);
  ExpectQuery(unheard, {StatusCode::NotConnected, kAttempts, kSilentConnect});
  ExpectRecovery();
}

TEST_F(ControllerFaultOnIpv6, SoundControllerIsReadAtTheFirstAttempt) {
  const SimulatedSmm onIpv6({"--generation", "1", "--address", "::1"});
  SMMInventory object(SettingsOf(onIpv6));
  ExpectQuery(object, {StatusCode::Success, 0, kSessionTimeout});
  EXPECT_EQ(OpenSessions(onIpv6), 0);
}

}  // namespace
}  // namespace Tavrin
