#include "tests/faults/Faults.h"

#include <numeric>
#include <optional>
#include <random>
#include <utility>

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using Departures = std::vector<Departure>;
using Bytes = std::vector<std::uint8_t>;

/// Random numbers of one fault.
class Chance {
 public:
  explicit Chance(std::uint32_t seed) : engine_(seed) {}

  std::size_t Below(std::size_t limit) { return engine_() % limit; }
  bool Hits(unsigned int percent) { return Below(100) < percent; }

  Bytes SomeBytes() {
    Bytes bytes(Below(300));
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(Below(256));
    }
    return bytes;
  }

 private:
  std::mt19937 engine_;
};

bool IsAnswer(const Datagram& datagram) { return datagram.direction == Direction::ToClient; }

}  // namespace

Fault Silence() {
  return [](const Datagram& /*datagram*/) { return Departures{}; };
}

Fault Loss(std::uint32_t seed, unsigned int percent) {
  return [chance = Chance(seed), percent](const Datagram& datagram) mutable {
    return chance.Hits(percent) ? Departures{} : Departures{{datagram}};
  };
}

Fault Duplicated() {
  return [](const Datagram& datagram) { return Departures{{datagram}, {datagram}}; };
}

Fault Reordered() {
  struct Held {
    std::optional<Datagram> toController;
    std::optional<Datagram> toClient;
  };
  return [held = Held()](const Datagram& datagram) mutable {
    std::optional<Datagram>& mine = IsAnswer(datagram) ? held.toClient : held.toController;
    if (!mine) {
      mine = datagram;
      return Departures{};
    }
    return Departures{{datagram}, {*std::exchange(mine, std::nullopt)}};
  };
}

Fault Delayed(milliseconds delay) {
  return [delay](const Datagram& datagram) {
    return Departures{{datagram, IsAnswer(datagram) ? delay : milliseconds(0)}};
  };
}

Fault Truncated(std::uint32_t seed, unsigned int percent) {
  return [chance = Chance(seed), percent](Datagram datagram) mutable {
    if (IsAnswer(datagram) && chance.Hits(percent)) {
      datagram.bytes.resize(chance.Below(datagram.bytes.size()));
    }
    return Departures{{std::move(datagram)}};
  };
}

Fault Garbage(std::uint32_t seed) {
  return [chance = Chance(seed)](Datagram datagram) mutable {
    if (IsAnswer(datagram)) {
      datagram.bytes = chance.SomeBytes();
    }
    return Departures{{std::move(datagram)}};
  };
}

Fault GarbageFlood(std::uint32_t seed) {
  return [chance = Chance(seed)](const Datagram& datagram) mutable {
    Departures departures;
    for (int after = 0; !IsAnswer(datagram) && after < 2000; after += 5) {
      departures.push_back({{Direction::ToClient, chance.SomeBytes()}, milliseconds(after)});
    }
    return departures;
  };
}

Fault AnswerToTheRequestBefore(unsigned int count) {
  return [seen = 0U, count, last = std::optional<Datagram>()](const Datagram& datagram) mutable {
    const bool isSound = seen++ < count;
    if (!IsAnswer(datagram)) {
      return Departures{{datagram}};
    }
    const std::optional<Datagram> before = std::exchange(last, datagram);
    return isSound ? Departures{{datagram}} : before ? Departures{{*before}} : Departures{};
  };
}

Fault RefusedPrivilege() {
  constexpr std::size_t kRmcpPlusAt = 4;
  constexpr std::uint8_t kRmcpPlus = 0x06;
  constexpr std::size_t kChecksumFrom = 19;  // Its own byte is the last.
  constexpr std::size_t kCommandAt = 21;
  constexpr std::uint8_t kSetSessionPrivilegeLevel = 0x3B;
  constexpr std::size_t kCompletionCodeAt = 22;
  constexpr std::uint8_t kExceedsLimit = 0x81;
  return [](Datagram datagram) {
    Bytes& bytes = datagram.bytes;
    if (IsAnswer(datagram) && bytes.size() > kCompletionCodeAt + 1 &&
        bytes[kRmcpPlusAt] == kRmcpPlus && bytes[kCommandAt] == kSetSessionPrivilegeLevel) {
      bytes[kCompletionCodeAt] = kExceedsLimit;
      const int sum = std::accumulate(bytes.begin() + kChecksumFrom, bytes.end() - 1, 0);
      bytes.back() = static_cast<std::uint8_t>(-sum);
    }
    return Departures{{std::move(datagram)}};
  };
}

Fault After(unsigned int count, Fault fault) {
  return [left = count, fault = std::move(fault)](const Datagram& datagram) mutable {
    if (left > 0) {
      --left;
      return Departures{{datagram}};
    }
    return fault(datagram);
  };
}

Fault Only(unsigned int number, Fault fault) {
  return [left = number, fault = std::move(fault)](const Datagram& datagram) mutable {
    return left > 0 && --left == 0 ? fault(datagram) : Departures{{datagram}};
  };
}

Fault SilenceAfter(unsigned int requests, std::function<void()> action) {
  return [left = requests, isSilent = false,
          action = std::move(action)](const Datagram& datagram) mutable {
    if (!IsAnswer(datagram) && !isSilent && left-- == 0) {
      isSilent = true;
      action();
    }
    return isSilent ? Departures{} : Departures{{datagram}};
  };
}

}  // namespace Tavrin
