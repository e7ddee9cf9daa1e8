#include "platform/standalone/ipmi_client/UdpSocket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>

#include "tests/support/Signals.h"
#include "tests/support/UdpPort.h"

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;
using testing::Pointee;

const Datagram kDatagram = {1, 2, 3};
constexpr milliseconds kShortly{200};
/// What a busy machine may add.
constexpr milliseconds kGrace{1000};

/// Waits for a datagram at the port and sends its sender another one.
void SendBack(const UdpPort& port, const Datagram& datagram) {
  std::array<char, 65536> buffer{};
  sockaddr_in from = {};
  socklen_t size = sizeof from;
  auto* const sender = reinterpret_cast<sockaddr*>(&from);
  recvfrom(port.Descriptor(), buffer.data(), buffer.size(), 0, sender, &size);
  sendto(port.Descriptor(), datagram.data(), datagram.size(), 0, sender, size);
}

/// Waits for a datagram that does not come; returns how long that took.
milliseconds WaitInVain(UdpSocket& socket) {
  const auto start = Clock::now();
  const UdpSocket::Received received = socket.Receive(start + kShortly);
  EXPECT_FALSE(received.datagram);
  EXPECT_EQ(received.error, 0);
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

TEST(UdpSocket, WaitsUntilTheDeadline) {
  const UdpPort port;
  UdpSocket socket("127.0.0.1", port.Number());
  EXPECT_EQ(socket.OpenError(), 0);
  const milliseconds took = WaitInVain(socket);
  EXPECT_GE(took, kShortly);
  EXPECT_LT(took, kShortly + kGrace);
}

TEST(UdpSocket, CaughtSignalsDoNotChangeTheDeadline) {
  const UdpPort port;
  UdpSocket socket("127.0.0.1", port.Number());
  const Signals signals(milliseconds(1));
  const milliseconds took = WaitInVain(socket);
  EXPECT_GE(took, kShortly);
  EXPECT_LT(took, kShortly + kGrace);
  EXPECT_GT(signals.Caught(), 10);
}

TEST(UdpSocket, DeadlineThatIsOverTakesNothing) {
  const UdpPort port;
  UdpSocket socket("127.0.0.1", port.Number());
  socket.Send(kDatagram);
  SendBack(port, kDatagram);
  EXPECT_FALSE(socket.Receive(Clock::now()).datagram);
  EXPECT_THAT(socket.Receive(Clock::now() + kGrace).datagram, Pointee(kDatagram));
}

TEST(UdpSocket, EmptyAndLongDatagramsComeWhole) {
  const UdpPort port;
  UdpSocket socket("127.0.0.1", port.Number());
  for (const std::size_t length : {0U, 1U, 1500U, 65507U}) {
    const Datagram datagram(length, 0xEE);
    EXPECT_EQ(socket.Send(datagram), 0);
    SendBack(port, datagram);
    const UdpSocket::Received received = socket.Receive(Clock::now() + kGrace);
    EXPECT_THAT(received.datagram, Pointee(datagram)) << length;
    EXPECT_EQ(received.error, 0);
  }
  EXPECT_EQ(socket.Send(Datagram(65508)), EMSGSIZE);
}

TEST(UdpSocket, ClosedPortIsRememberedAndDoesNotEndTheWaiting) {
  UdpPort port;
  port.Refuse();
  UdpSocket socket("127.0.0.1", port.Number());
  EXPECT_EQ(socket.PeerError(), 0);
  EXPECT_EQ(socket.Send(kDatagram), 0);
  EXPECT_GE(WaitInVain(socket), kShortly);
  EXPECT_EQ(socket.PeerError(), ECONNREFUSED);
  // The network's word on one datagram does not keep the next from being sent.
  EXPECT_EQ(socket.Send(kDatagram), 0);
  EXPECT_EQ(socket.Send(kDatagram), 0);
  socket.ForgetPeerError();
  EXPECT_EQ(socket.PeerError(), 0);
}

TEST(UdpSocket, SilentPortIsNotRememberedAsClosed) {
  const UdpPort port;
  UdpSocket socket("127.0.0.1", port.Number());
  EXPECT_EQ(socket.Send(kDatagram), 0);
  WaitInVain(socket);
  EXPECT_EQ(socket.PeerError(), 0);
}

TEST(UdpSocket, AddressThatCannotBeReachedIsAnError) {
  EXPECT_EQ(UdpSocket("no address", 623).OpenError(), EADDRNOTAVAIL);
  EXPECT_EQ(UdpSocket("localhost", 623).OpenError(), EADDRNOTAVAIL);
  // Broadcasts have to be asked for.
  EXPECT_EQ(UdpSocket("255.255.255.255", 623).OpenError(), EACCES);
}

TEST(UdpSocket, ThatWasNotOpenedClosesNothing) {
  { const UdpSocket socket("no address", 623); }
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    EXPECT_NE(fcntl(descriptor, F_GETFD), -1) << descriptor;
  }
}

TEST(UdpSocket, DatagramOfUsualLengthNeedsNoMemory) {
  const UdpPort port;
  UdpSocket socket("127.0.0.1", port.Number());
  const auto receive = [&](std::size_t length) {
    const Datagram datagram(length, 0xEE);
    socket.Send(kDatagram);
    SendBack(port, datagram);
    const Datagram* const received = socket.Receive(Clock::now() + kGrace).datagram;
    EXPECT_THAT(received, Pointee(datagram));
    return received == nullptr ? nullptr : received->data();
  };
  EXPECT_EQ(receive(1), receive(1024));
}

TEST(UdpSocket, LeavesNoDescriptorOpen) {
  const int before = dup(STDERR_FILENO);
  { const UdpSocket socket("127.0.0.1", 623); }
  const int after = dup(STDERR_FILENO);
  EXPECT_EQ(after, before + 1);
  EXPECT_EQ(access("/proc/self/fd/0", F_OK), 0);
  close(before);
  close(after);
}

TEST(UdpSocket, WithoutADescriptorThatIsTheError) {
  EXPECT_EQ(UdpSocket("127.0.0.1", 623).OpenError(), 0);
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none = {0, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const int error = UdpSocket("127.0.0.1", 623).OpenError();
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(error, EMFILE);
}

TEST(UdpSocket, DescriptorZeroIsClosedLikeAnyOther) {
  const UdpPort port;
  const int standardInput = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  auto socket = std::make_unique<UdpSocket>("127.0.0.1", port.Number());
  EXPECT_EQ(socket->OpenError(), 0);
  EXPECT_EQ(access("/proc/self/fd/0", F_OK), 0);
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), FD_CLOEXEC);
  socket.reset();
  EXPECT_NE(access("/proc/self/fd/0", F_OK), 0);
  dup2(standardInput, STDIN_FILENO);
  close(standardInput);
}

}  // namespace
}  // namespace Tavrin::Standalone
