#include "tools/smm-inventory/Interrupt.h"

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <ctime>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "tools/smm-inventory/ExitCode.h"

namespace Tavrin {
namespace {

constexpr std::int64_t kMillisecondsOfOne = 200;

/// In milliseconds of the monotonic clock; 0 as long as there was none.
std::atomic<std::int64_t> firstSignal{0};
static_assert(std::atomic<std::int64_t>::is_always_lock_free, "a handler of signals must not wait");

std::int64_t Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000 + 1;
}

extern "C" void TakeInterrupt(int /*signal*/) {
  std::int64_t first = 0;
  if (!firstSignal.compare_exchange_strong(first, Now()) && Now() - first > kMillisecondsOfOne) {
    _exit(ExitCode::Interrupted);
  }
  Standalone::StopExchanges();
}

void Take(int signal, struct sigaction& former) {
  struct sigaction action {};
  action.sa_handler = TakeInterrupt;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, &former);
  if (former.sa_handler == SIG_IGN) {
    sigaction(signal, &former, nullptr);
  }
}

}  // namespace

Interrupt::Interrupt() {
  Take(SIGINT, formerInterrupt_);
  Take(SIGTERM, formerTermination_);
  Take(SIGHUP, formerHangup_);
}

Interrupt::~Interrupt() {
  sigaction(SIGINT, &formerInterrupt_, nullptr);
  sigaction(SIGTERM, &formerTermination_, nullptr);
  sigaction(SIGHUP, &formerHangup_, nullptr);
}

bool Interrupt::Happened() { return firstSignal != 0; }

}  // namespace Tavrin
