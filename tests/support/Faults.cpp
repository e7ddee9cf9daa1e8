#include "tests/support/Faults.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <random>
#include <utility>

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using Bytes = std::vector<std::uint8_t>;

/// Whether a datagram is meant. Asked of each once, so that it may count them.
using Which = std::function<bool(const Datagram&)>;

/// The fault for what is meant; sound for all else.
Fault For(Which which, Fault fault) {
  return [which = std::move(which), fault = std::move(fault)](const Datagram& datagram) {
    return which(datagram) ? fault(datagram) : Departures{{datagram}};
  };
}

Which Chance(std::uint32_t seed, unsigned int percent) {
  return [engine = std::mt19937(seed), percent](const Datagram& /*datagram*/) mutable {
    return engine() % 100 < percent;
  };
}

Bytes RandomBytes(std::mt19937& engine) {
  Bytes bytes(engine() % 300);
  std::generate(bytes.begin(), bytes.end(),
                [&engine] { return static_cast<std::uint8_t>(engine()); });
  return bytes;
}

bool IsAnswer(const Datagram& datagram) { return datagram.direction == Direction::ToClient; }

bool Is(const Datagram& datagram, Answer answer) {
  constexpr int kProtection = 0xC0;
  constexpr std::size_t kCommandAt = 21;
  constexpr std::uint8_t kSetSessionPrivilegeLevel = 0x3B;
  const int type = PayloadType(datagram);
  switch (answer) {
    case Answer::Any:
      return true;
    case Answer::WithinSession:
      return (type & ~kProtection) == 0;
    case Answer::Privilege:
      return type == 0 && datagram.bytes.at(kCommandAt) == kSetSessionPrivilegeLevel;
    default:
      return type == static_cast<int>(answer);
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

}  // namespace

Fault Silence() {
  return [](const Datagram& /*datagram*/) { return Departures{}; };
}

Fault Loss(std::uint32_t seed, unsigned int percent) {
  return For(Chance(seed, percent), Silence());
}

Fault Duplicated() {
  return [](const Datagram& datagram) { return Departures{{datagram}, {datagram}}; };
}

Fault Reordered() {
  return [held = std::map<Direction, Datagram>()](const Datagram& datagram) mutable {
    if (held.emplace(datagram.direction, datagram).second) {
      return Departures{};
    }
    return Departures{{datagram}, {held.extract(datagram.direction).mapped()}};
  };
}

Fault Delayed(milliseconds delay) {
  return At(Answer::Any, [delay](const Datagram& datagram) {
    return Departures{{datagram, delay}};
  });
}

Fault Truncated(std::uint32_t seed, unsigned int percent) {
  const Fault cut = [engine = std::mt19937(seed)](Datagram datagram) mutable {
    datagram.bytes.resize(engine() % datagram.bytes.size());
    return Departures{{std::move(datagram)}};
  };
  return At(Answer::Any, For(Chance(seed, percent), cut));
}

Fault Garbage(std::uint32_t seed) {
  return At(Answer::Any, [engine = std::mt19937(seed)](const Datagram& /*datagram*/) mutable {
    return Departures{{{Direction::ToClient, RandomBytes(engine)}}};
  });
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

Fault Changed(Answer answer, const Change& change) {
  return At(answer, [change](Datagram datagram) {
    constexpr std::ptrdiff_t kMessageAt = 16;
    constexpr std::ptrdiff_t kIpmi15MessageAt = 14;
    const std::uint8_t type = PayloadType(datagram);
    change(datagram.bytes);
    if (type == 0x00 || type == 0xFF) {
      CorrectChecksums(datagram.bytes, type == 0x00 ? kMessageAt : kIpmi15MessageAt);
    }
    return Departures{{std::move(datagram)}};
  });
}

Fault At(Answer answer, Fault fault) {
  return For(
      [answer](const Datagram& datagram) { return IsAnswer(datagram) && Is(datagram, answer); },
      std::move(fault));
}

Fault After(unsigned int count, Fault fault) {
  return For([seen = 0U, count](const Datagram& /*datagram*/) mutable { return seen++ >= count; },
             std::move(fault));
}

Fault Only(unsigned int number, Fault fault) {
  return For([seen = 0U, number](const Datagram& /*datagram*/) mutable { return ++seen == number; },
             std::move(fault));
}

Fault SilenceAfter(unsigned int requests, std::function<void()> action) {
  const Which isBehind = [left = requests, isSilent = false,
                          action = std::move(action)](const Datagram& datagram) mutable {
    if (!IsAnswer(datagram) && !isSilent && left-- == 0) {
      isSilent = true;
      action();
    }
    return isSilent;
  };
  return For(isBehind, Silence());
}

}  // namespace Tavrin
