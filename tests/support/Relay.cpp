#include "tests/support/Relay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace Tavrin {
namespace {

using Clock = std::chrono::steady_clock;

/// A client keeps its socket no longer than one conversation, so that the older ones can go.
constexpr std::size_t kClientCapacity = 32;
constexpr int kLongestWaitMs = 20;
constexpr std::size_t kDatagramCapacity = 2048;

sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

FileDescriptor BoundSocket() {
  FileDescriptor descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const sockaddr_in any = Loopback(0);
  if (bind(descriptor.Get(), reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
    throw std::runtime_error("the relay gets no socket");
  }
  return descriptor;
}

std::uint16_t PortOf(int descriptor) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

}  // namespace

struct Relay::Client {
  std::uint16_t port;
  FileDescriptor towardsController;
};

struct Relay::Queued {
  Clock::time_point due;
  std::shared_ptr<Client> client;
  Datagram datagram;
};

Relay::Relay(std::uint16_t controllerPort)
    : controllerPort_(controllerPort),
      front_(BoundSocket()),
      port_(PortOf(front_.Get())),
      thread_([this] { Run(); }) {}

Relay::~Relay() {
  ends_ = true;
  thread_.join();
}

void Relay::Break(Fault fault) {
  const std::lock_guard<std::mutex> lock(mutex_);
  fault_ = std::move(fault);
  queue_.clear();
}

std::size_t Relay::SessionsAskedFor() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return sessionCount_;
}

void Relay::Run() {
  while (!ends_) {
    std::vector<pollfd> sources = {{front_.Get(), POLLIN, 0}};
    std::vector<std::shared_ptr<Client>> owners = {nullptr};
    for (const std::shared_ptr<Client>& client : clients_) {
      sources.push_back({client->towardsController.Get(), POLLIN, 0});
      owners.push_back(client);
    }
    poll(sources.data(), sources.size(), MillisecondsToNext());
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (sources[i].revents != 0) {
        TakeFrom(sources[i].fd, owners[i]);
      }
    }
    SendDue();
  }
}

/// Takes one datagram from a client (`client` is null) or from the controller.
void Relay::TakeFrom(int descriptor, const std::shared_ptr<Client>& client) {
  std::array<std::uint8_t, kDatagramCapacity> buffer{};
  sockaddr_in from{};
  socklen_t length = sizeof from;
  const ssize_t count = recvfrom(descriptor, buffer.data(), buffer.size(), 0,
                                 reinterpret_cast<sockaddr*>(&from), &length);
  if (count < 0) {
    return;
  }
  const Direction direction = client ? Direction::ToClient : Direction::ToController;
  Pass(client ? client : ClientAt(ntohs(from.sin_port)),
       {direction, {buffer.begin(), buffer.begin() + count}});
}

std::shared_ptr<Relay::Client> Relay::ClientAt(std::uint16_t port) {
  const auto known = std::find_if(clients_.begin(), clients_.end(),
                                  [port](const auto& client) { return client->port == port; });
  if (known != clients_.end()) {
    return *known;
  }
  clients_.push_back(std::make_shared<Client>(Client{port, BoundSocket()}));
  if (clients_.size() > kClientCapacity) {
    clients_.pop_front();
  }
  clientCount_ = clients_.size();
  return clients_.back();
}

void Relay::Pass(const std::shared_ptr<Client>& client, const Datagram& datagram) {
  const std::lock_guard<std::mutex> lock(mutex_);
  CountSession(datagram);
  const auto departures = fault_ ? fault_(datagram) : std::vector<Departure>{{datagram}};
  for (const Departure& departure : departures) {
    queue_.push_back({Clock::now() + departure.delay, client, departure.datagram});
  }
}

/// An Open Session request carries the number that the client gave the session; each attempt has
/// its own.
void Relay::CountSession(const Datagram& datagram) {
  constexpr std::size_t kAuthenticationTypeAt = 4;
  constexpr std::uint8_t kRmcpPlus = 0x06;
  constexpr std::size_t kPayloadTypeAt = 5;
  constexpr std::uint8_t kOpenSessionRequest = 0x10;
  constexpr std::size_t kSessionNumberAt = 20;
  const std::vector<std::uint8_t>& bytes = datagram.bytes;
  if (datagram.direction == Direction::ToController && bytes.size() >= kSessionNumberAt + 4 &&
      bytes[kAuthenticationTypeAt] == kRmcpPlus && bytes[kPayloadTypeAt] == kOpenSessionRequest) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      number = number << 8 | bytes[kSessionNumberAt + i];
    }
    RememberSession(number);
  }
}

/// Counts a number that is not among the latest; repetitions follow each other closely.
void Relay::RememberSession(std::uint32_t number) {
  constexpr std::size_t kMemory = 16;
  if (std::find(latestSessions_.begin(), latestSessions_.end(), number) != latestSessions_.end()) {
    return;
  }
  ++sessionCount_;
  latestSessions_.push_back(number);
  if (latestSessions_.size() > kMemory) {
    latestSessions_.pop_front();
  }
}

void Relay::SendDue() {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto now = Clock::now();
  const auto due = std::stable_partition(queue_.begin(), queue_.end(),
                                         [now](const Queued& one) { return one.due > now; });
  std::stable_sort(due, queue_.end(),
                   [](const Queued& left, const Queued& right) { return left.due < right.due; });
  std::for_each(due, queue_.end(), [this](const Queued& one) { Send(*one.client, one.datagram); });
  queue_.erase(due, queue_.end());
}

int Relay::MillisecondsToNext() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  auto wait = std::chrono::milliseconds(kLongestWaitMs);
  for (const Queued& one : queue_) {
    wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(one.due - Clock::now()));
  }
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, wait.count()));
}

void Relay::Send(const Client& client, const Datagram& datagram) const {
  const bool toClient = datagram.direction == Direction::ToClient;
  const sockaddr_in target = Loopback(toClient ? client.port : controllerPort_.load());
  // What a closed port refuses is lost, as it would be on a real wire.
  static_cast<void>(sendto(toClient ? front_.Get() : client.towardsController.Get(),
                           datagram.bytes.data(), datagram.bytes.size(), 0,
                           reinterpret_cast<const sockaddr*>(&target), sizeof target));
}

}  // namespace Tavrin
