#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <new>
#include <string>
#include <thread>

#include "tests/faults/FaultTest.h"

namespace Tavrin {
namespace {

/// Waits until the controller counts no open session, for as long as it may keep one that nobody
/// uses and a little longer; ipmi_sim keeps it for 30 seconds.
int OpenSessionsInTheEnd(const SimulatedSmm& simulator) {
  const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(45);
  int open = OpenSessions(simulator);
  while (open > 0 && std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    open = OpenSessions(simulator);
  }
  return open;
}

using LeftBehind = FaultTest;

TEST_F(LeftBehind, ExceptionLeavesNeitherSessionNorDescriptor) {
  const SimulatedSmm second({"--generation", "2"},
                            R"({"overrides": [{"command": "0xB0", "response": "4A"}]})");
  SMMInventory object(SettingsOf(second));
  const std::size_t descriptors = OpenDescriptors();
  std::string text;
  EXPECT_THROW(object.GetSmmSN(text), std::bad_alloc);
  EXPECT_EQ(OpenSessions(second), 0);
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(LeftBehind, ConstructionLeavesNothing) {
  const std::size_t descriptors = OpenDescriptors();
  const std::size_t threads = Threads();
  const SMMInventory object(SettingsOf(*simulator));
  ExpectNoSession();
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(Threads(), threads);
}

TEST_F(LeftBehind, RefusedPasswordOrUserLeavesNoSession) {
  TavrinConnection::ConnectionInfo settings = SettingsOf(*simulator);
  settings.password = "sesame2";
  SMMInventory wrongPassword = Unread(settings);
  ExpectQuery(wrongPassword, {StatusCode::NotConnected, 1, kSessionTimeout});
  settings.userName = "nobody";
  SMMInventory wrongUser = Unread(settings);
  ExpectQuery(wrongUser, {StatusCode::NotConnected, 1, kSessionTimeout});
  ExpectNoSession();
}

TEST_F(LeftBehind, SessionIsClosedThoughTheWordOfItIsLostOnce) {
  constexpr unsigned int kCloseSessionRequest = 13;
  relay.Break(Only(kCloseSessionRequest, Silence()));
  ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
  ExpectNoSession();
}

TEST_F(LeftBehind, ClosedDescriptorZeroStaysClosed) {
  const int standardInput = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
  EXPECT_NE(access("/proc/self/fd/0", F_OK), 0);
  relay.Break(Silence());
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  EXPECT_NE(access("/proc/self/fd/0", F_OK), 0);
  dup2(standardInput, STDIN_FILENO);
  close(standardInput);
}

// A session that its controller opens without the client's knowledge has no key to be closed with.

TEST_F(LeftBehind, SessionOfADoubledRequestIsForgottenByTheController) {
  constexpr unsigned int kOpenSessionRequest = 3;
  relay.Break(Only(kOpenSessionRequest, Duplicated()));
  ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
  EXPECT_EQ(OpenSessions(*simulator), 1);
  EXPECT_EQ(OpenSessionsInTheEnd(*simulator), 0);
}

TEST_F(LeftBehind, SessionsOfDoubledRequestsLeaveRoomForOneMore) {
  // More than the simulator has room for. The second copy is what finds no room then.
  constexpr int kRoom = 63;
  relay.Break(Duplicated());
  for (int query = 0; query <= kRoom; ++query) {
    std::string text;
    EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success) << query;
  }
  EXPECT_GT(OpenSessions(*simulator), kRoom / 2);
  ExpectRecovery();
}

TEST_F(LeftBehind, SessionsOfABrokenWireAreForgottenByTheController) {
  for (const unsigned int requests : {2U, 3U, 4U, 5U, 6U}) {
    relay.Break(SilenceAfter(requests));
    std::string text;
    inventory.GetSmmMT(text);
  }
  relay.Heal();
  EXPECT_GT(OpenSessions(*simulator), 0);
  EXPECT_EQ(OpenSessionsInTheEnd(*simulator), 0);
}

}  // namespace
}  // namespace Tavrin
