#include "tests/support/Faults.h"

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

constexpr std::size_t kAuthenticationTypeAt = 4;
constexpr std::size_t kPayloadTypeAt = 5;
constexpr std::uint8_t kRmcpPlus = 0x06;
constexpr std::uint8_t kEncrypted = 0x80;
constexpr std::uint8_t kProtection = 0xC0;

/// The payload type, with the bits that tell how it is protected; 0xFF in a packet of IPMI 1.5.
std::uint8_t PayloadType(const Datagram& datagram) {
  const Bytes& bytes = datagram.bytes;
  return bytes.size() > kPayloadTypeAt && bytes[kAuthenticationTypeAt] == kRmcpPlus
             ? bytes[kPayloadTypeAt]
             : 0xFF;
}

bool IsSessionAnswer(const Datagram& datagram) {
  return IsAnswer(datagram) && (PayloadType(datagram) & ~kProtection) == 0;
}

bool IsOpeningAnswer(const Datagram& datagram, OpeningAnswer answer) {
  const std::uint8_t type = PayloadType(datagram);
  switch (answer) {
    case OpeningAnswer::Capabilities:
      return IsAnswer(datagram) && type == 0xFF;
    case OpeningAnswer::OpenSession:
      return IsAnswer(datagram) && type == 0x11;
    case OpeningAnswer::Rakp2:
      return IsAnswer(datagram) && type == 0x13;
    default:
      return IsAnswer(datagram) && type == 0x15;
  }
}

std::uint8_t Checksum(Bytes::iterator begin, Bytes::iterator end) {
  return static_cast<std::uint8_t>(-std::accumulate(begin, end, 0));
}

/// Of an IPMI message that ends the datagram: the first checksum ends its address, the second
/// itself.
void CorrectChecksums(Bytes& bytes, std::ptrdiff_t messageAt) {
  const auto first = bytes.begin() + messageAt + 2;
  *first = Checksum(first - 2, first);
  bytes.back() = Checksum(first + 1, bytes.end() - 1);
}

// Where things are in an answer of a session that nothing protects.
constexpr std::ptrdiff_t kMessageAt = 16;
constexpr std::size_t kNetworkFunctionAt = 17;
constexpr std::size_t kCommandAt = 21;
constexpr std::size_t kCompletionCodeAt = 22;
constexpr std::uint8_t kSetSessionPrivilegeLevel = 0x3B;

/// Answers of the session with some bits of one byte turned over.
Fault Flipped(std::size_t at, std::uint8_t bits) {
  return [at, bits](Datagram datagram) {
    if (IsSessionAnswer(datagram)) {
      datagram.bytes.at(at) ^= bits;
      CorrectChecksums(datagram.bytes, kMessageAt);
    }
    return Departures{{std::move(datagram)}};
  };
}

bool IsPrivilegeAnswer(const Datagram& datagram) {
  return IsSessionAnswer(datagram) && datagram.bytes.at(kCommandAt) == kSetSessionPrivilegeLevel;
}

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

Fault DuplicatedAnswers() {
  return [](const Datagram& datagram) {
    return IsAnswer(datagram) ? Departures{{datagram}, {datagram}} : Departures{{datagram}};
  };
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

Fault Changed(OpeningAnswer answer, const Change& change) {
  constexpr std::ptrdiff_t kIpmi15MessageAt = 14;
  return [answer, change](Datagram datagram) {
    if (!IsOpeningAnswer(datagram, answer)) {
      return Departures{{std::move(datagram)}};
    }
    change(datagram.bytes);
    if (answer == OpeningAnswer::Capabilities && !datagram.bytes.empty()) {
      CorrectChecksums(datagram.bytes, kIpmi15MessageAt);
    }
    return datagram.bytes.empty() ? Departures{} : Departures{{std::move(datagram)}};
  };
}

Fault Delayed(OpeningAnswer answer, milliseconds delay) {
  return [answer, delay](const Datagram& datagram) {
    return Departures{{datagram, IsOpeningAnswer(datagram, answer) ? delay : milliseconds(0)}};
  };
}

Fault RefusedPrivilege(std::uint8_t completionCode) {
  return [completionCode](Datagram datagram) {
    if (IsPrivilegeAnswer(datagram)) {
      datagram.bytes.at(kCompletionCodeAt) = completionCode;
      CorrectChecksums(datagram.bytes, kMessageAt);
    }
    return Departures{{std::move(datagram)}};
  };
}

Fault SilentPrivilege() {
  return [](const Datagram& datagram) {
    return IsPrivilegeAnswer(datagram) ? Departures{} : Departures{{datagram}};
  };
}

Fault Unencrypted(unsigned int count) {
  return [left = count](Datagram datagram) mutable {
    if (left > 0 && IsSessionAnswer(datagram)) {
      --left;
      datagram.bytes[kPayloadTypeAt] &= static_cast<std::uint8_t>(~kEncrypted);
    }
    return Departures{{std::move(datagram)}};
  };
}

Fault OtherCommand() { return Flipped(kCommandAt, 0x01); }

Fault OtherNetworkFunction() { return Flipped(kNetworkFunctionAt, 0x08); }

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
