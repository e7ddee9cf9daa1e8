#include "platform/standalone/ipmi_client/ConnectPresence.h"

#include <freeipmi/freeipmi.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <utility>
#include <vector>

#include "platform/Log.h"
#include "platform/standalone/ipmi_client/ConnectRound.h"
#include "platform/standalone/ipmi_client/HostAddress.h"
#include "platform/standalone/ipmi_client/Interruption.h"
#include "platform/standalone/ipmi_client/OpeningMessages.h"
#include "platform/standalone/ipmi_client/UdpSocket.h"
#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {
namespace Standalone {
namespace {

using std::chrono::milliseconds;

constexpr const char* kSourcePath = "platform/standalone/ipmi_client/ConnectPresence";
constexpr int kTries = 3;
constexpr milliseconds kInterval{1000};

/// Those that the client's attempts go to.
constexpr std::size_t kMostAddresses = kLibraryConnectAttempts;

/// An RMCP datagram of class ASF that wants no acknowledgement: ASF's enterprise number, the
/// message type "presence ping", a tag, and no data.
Datagram MakePing(std::uint8_t tag) {
  return {0x06, 0x00, 0xFF, 0x06, 0x00, 0x00, 0x11, 0xBE, 0x80, tag, 0x00, 0x00};
}

/// One address at which somebody may be.
class Door {
 public:
  Door(const std::string& numericAddress, int port) : socket_(numericAddress, port) {
    error_ = socket_.OpenError();
  }

  void Knock(std::uint8_t tag) {
    socket_.ForgetPeerError();
    for (const Datagram& datagram :
         {MakePing(tag), MakeCapabilitiesRequest(tag, IPMI_PRIVILEGE_LEVEL_ADMIN)}) {
      // A datagram cannot be made when memory is short, which may pass; the other one goes out.
      error_ = error_ != 0 || datagram.empty() ? error_ : socket_.Send(datagram);
    }
  }

  /// Whether anything has come from there.
  bool IsAnswered() {
    const UdpSocket::Received received = error_ == 0 ? socket_.Take() : UdpSocket::Received();
    error_ = error_ != 0 ? error_ : received.error;
    return received.datagram != nullptr;
  }

  /// What this machine says against sending there; 0 for nothing.
  [[nodiscard]] int Error() const { return error_; }

  /// The same, or else what the network has said since the last knock.
  [[nodiscard]] int Obstacle() const { return error_ != 0 ? error_ : socket_.PeerError(); }

  [[nodiscard]] pollfd Source() const { return {socket_.Descriptor(), POLLIN, 0}; }

 private:
  UdpSocket socket_;
  int error_{};
};

/// All addresses of one host.
class Doors {
 public:
  Doors(const std::vector<std::string>& addresses, int port) {
    for (const std::string& address : addresses) {
      doors_.emplace_back(address, port);
    }
  }

  /// Returns at once when nothing can be sent at all, or else as ConnectPresence.h says.
  Failure Ask();

 private:
  enum class Outcome { Answered, Hopeless, Nothing };

  Outcome Await(Clock::time_point end, bool isObstacleTaken);
  void Wait(Clock::time_point end) const;
  [[nodiscard]] bool IsEach(int (Door::*obstacle)() const) const;
  [[nodiscard]] Failure Absence() const;

  std::deque<Door> doors_;
};

Failure Doors::Ask() {
  auto end = Clock::now();
  for (int tries = 1; tries <= kTries; ++tries) {
    for (Door& door : doors_) {
      door.Knock(static_cast<std::uint8_t>(tries));
    }
    end += kInterval;
    switch (Await(end, tries > 1)) {
      case Outcome::Answered:
        return {};
      case Outcome::Hopeless:
        return Absence();
      case Outcome::Nothing:
        break;
    }
    if (Clock::now() >= EndOfExchanges()) {
      return InterruptionFailure();
    }
  }
  return Absence();
}

/// A controller that starts again is told of as absent for a moment, so that the network's word is
/// not taken for the first try.
Doors::Outcome Doors::Await(Clock::time_point end, bool isObstacleTaken) {
  while (Clock::now() < std::min(end, EndOfExchanges())) {
    if (IsEach(isObstacleTaken ? &Door::Obstacle : &Door::Error)) {
      return Outcome::Hopeless;
    }
    Wait(std::min({end, EndOfExchanges(), Clock::now() + kLongestUnwatchedWait}));
    for (Door& door : doors_) {
      if (door.IsAnswered()) {
        return Outcome::Answered;
      }
    }
  }
  return Outcome::Nothing;
}

void Doors::Wait(Clock::time_point end) const {
  std::vector<pollfd> sources;
  for (const Door& door : doors_) {
    sources.push_back(door.Source());
  }
  const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
  poll(sources.data(), sources.size(), static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
}

bool Doors::IsEach(int (Door::*obstacle)() const) const {
  return std::all_of(doors_.begin(), doors_.end(),
                     [obstacle](const Door& door) { return (door.*obstacle)() != 0; });
}

/// What is said against one of several addresses tells nothing of the others.
Failure Doors::Absence() const {
  if (!IsEach(&Door::Obstacle)) {
    return FailureOf(Trouble::NotPresent);
  }
  const int obstacle = doors_.front().Obstacle();
  return obstacle == ECONNREFUSED ? FailureOf(Trouble::NotListening) : SystemFailure(obstacle);
}

Failure Ask(const std::string& host, int port) {
  if (Clock::now() >= EndOfExchanges()) {
    return InterruptionFailure();
  }
  std::vector<std::string> addresses;
  Failure failure = ResolveHost(host, addresses);
  if (failure) {
    return failure;
  }
  addresses.resize(std::min(addresses.size(), kMostAddresses));
  return Doors(addresses, port).Ask();
}

void Report(const LastExchange& exchange, const Failure& failure) {
  if (Log::GetMinLogLevel() >= LogLevel::Warning) {
    Log(LogLevel::Warning, kSourcePath, __LINE__).Stream()
        << "asking for presence failed: host " << exchange.host << ", port " << exchange.port
        << ": " << failure.words << (failure.advice.empty() ? "" : "; ") << failure.advice;
  }
}

}  // namespace

LastExchange AskPresence(const std::string& host, std::uint16_t port) {
  const Failure failure = Ask(host, port);
  LastExchange exchange;
  exchange.host = host;
  exchange.port = std::to_string(port);
  exchange.result = failure.result;
  exchange.cause = failure.cause;
  exchange.words = failure.words;
  if (failure) {
    Report(exchange, failure);
  }
  return exchange;
}

}  // namespace Standalone
}  // namespace Tavrin
