#include "tests/doubles/Pauses.h"

#include <atomic>
#include <utility>

namespace Tavrin::Double {
namespace {

std::atomic<std::uint64_t> pausedSeconds{0};

// Whatever is set before main() begins finds them constructed.
auto& ThePause() {
  static std::function<unsigned int(unsigned int)> pause;
  return pause;
}

auto& TheWait() {
  static std::function<int(clockid_t, int, const timespec&)> wait;
  return wait;
}

}  // namespace

std::uint64_t PausedSeconds() { return pausedSeconds; }

void OnPause(std::function<unsigned int(unsigned int)> pause) { ThePause() = std::move(pause); }

void OnWait(std::function<int(clockid_t, int, const timespec&)> wait) {
  TheWait() = std::move(wait);
}

}  // namespace Tavrin::Double

extern "C" unsigned int sleep(unsigned int seconds) {
  Tavrin::Double::pausedSeconds += seconds;
  return Tavrin::Double::ThePause() ? Tavrin::Double::ThePause()(seconds) : 0;
}

extern "C" int clock_nanosleep(clockid_t clock, int flags, const timespec* until,
                               timespec* /*remaining*/) {
  return Tavrin::Double::TheWait() ? Tavrin::Double::TheWait()(clock, flags, *until) : 0;
}
