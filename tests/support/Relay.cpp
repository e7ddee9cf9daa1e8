#include "tests/support/Relay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace Tavrin {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

/// The number that a client gave the session that it asks for in an Open Session request; each
/// attempt has its own.
std::optional<std::vector<std::uint8_t>> SessionAskedForIn(const Datagram& datagram) {
  constexpr std::uint8_t kOpenSessionRequest = 0x10;
  constexpr std::ptrdiff_t kNumberAt = 20;
  constexpr std::ptrdiff_t kNumberEnd = 24;
  const auto begin = datagram.bytes.begin();
  const bool asks = PayloadType(datagram) == kOpenSessionRequest &&
                    datagram.bytes.size() >= std::size_t{kNumberEnd};
  return asks ? std::optional(std::vector(begin + kNumberAt, begin + kNumberEnd)) : std::nullopt;
}

}  // namespace

std::uint8_t PayloadType(const Datagram& datagram) {
  constexpr std::size_t kAuthenticationTypeAt = 4;
  constexpr std::size_t kPayloadTypeAt = 5;
  constexpr std::uint8_t kRmcpPlus = 0x06;
  const std::vector<std::uint8_t>& bytes = datagram.bytes;
  return bytes.size() > kPayloadTypeAt && bytes[kAuthenticationTypeAt] == kRmcpPlus
             ? bytes[kPayloadTypeAt]
             : 0xFF;
}

Relay::Relay(std::uint16_t controllerPort)
    : controllerPort_(controllerPort), thread_([this] { Run(); }) {}

Relay::~Relay() {
  ends_ = true;
  thread_.join();
}

void Relay::Break(Fault fault) {
  const std::lock_guard<std::mutex> lock(mutex_);
  fault_ = std::move(fault);
  queue_.clear();
}

void Relay::Run() {
  std::vector<pollfd> sources = {{front_.Descriptor(), POLLIN, 0}};
  for (const Client& client : clients_) {
    sources.push_back({client.towardsController.Descriptor(), POLLIN, 0});
  }
  while (!ends_) {
    poll(sources.data(), sources.size(), SendDue());
    if (sources.front().revents != 0) {
      Take(front_, nullptr);
    }
    for (std::size_t i = 0; i < clients_.size(); ++i) {
      if (sources[i + 1].revents != 0) {
        Take(clients_.at(i).towardsController, &clients_.at(i));
      }
    }
  }
}

/// Takes one datagram from the controller to the client, or from a client that is yet to be found.
void Relay::Take(const UdpPort& source, Client* client) {
  std::array<std::uint8_t, 2048> buffer{};
  sockaddr_in from{};
  socklen_t length = sizeof from;
  const ssize_t count = recvfrom(source.Descriptor(), buffer.data(), buffer.size(), MSG_DONTWAIT,
                                 reinterpret_cast<sockaddr*>(&from), &length);
  if (count >= 0) {
    Pass({client == nullptr ? Direction::ToController : Direction::ToClient,
          {buffer.begin(), buffer.begin() + count}},
         client == nullptr ? ClientAt(ntohs(from.sin_port)) : *client);
  }
}

Relay::Client& Relay::ClientAt(std::uint16_t port) {
  auto client = std::find_if(clients_.begin(), clients_.end(),
                             [port](const Client& one) { return one.port == port; });
  if (client == clients_.end()) {
    client = clients_.begin() + static_cast<std::ptrdiff_t>(clientCount_++ % clients_.size());
    client->port = port;
  }
  return *client;
}

void Relay::Pass(const Datagram& datagram, Client& client) {
  if (const auto number = SessionAskedForIn(datagram)) {
    sessionCount_ += std::exchange(client.session, *number) == *number ? 0 : 1;
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  for (Departure& departure : fault_ ? fault_(datagram) : Departures{{datagram}}) {
    const bool toClient = departure.datagram.direction == Direction::ToClient;
    queue_.emplace(
        Clock::now() + departure.delay,
        Queued{toClient ? &front_ : &client.towardsController,
               toClient ? client.port : std::uint16_t{0}, std::move(departure.datagram.bytes)});
  }
}

/// Returns how many milliseconds to wait until more has to be sent.
int Relay::SendDue() {
  constexpr milliseconds kLongestWait{20};
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto now = Clock::now();
  while (!queue_.empty() && queue_.begin()->first <= now) {
    const auto [from, to, bytes] = std::move(queue_.extract(queue_.begin()).mapped());
    const sockaddr_in target = Loopback(to == 0 ? controllerPort_.load() : to);
    // What a closed port refuses is lost, as it would be on a real wire.
    static_cast<void>(sendto(from->Descriptor(), bytes.data(), bytes.size(), 0,
                             reinterpret_cast<const sockaddr*>(&target), sizeof target));
  }
  const auto wait =
      queue_.empty() ? kLongestWait : std::chrono::ceil<milliseconds>(queue_.begin()->first - now);
  return static_cast<int>(std::min(kLongestWait, wait).count());
}

}  // namespace Tavrin
