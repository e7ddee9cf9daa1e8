#include "tools/smm-inventory/Interrupt.h"

#include <unistd.h>

#include <atomic>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "tools/smm-inventory/ExitCode.h"

namespace Tavrin {
namespace {

std::atomic<bool> happened{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a handler of signals must not wait");

extern "C" void TakeInterrupt(int /*signal*/) {
  if (happened.exchange(true)) {
    _exit(ExitCode::Interrupted);
  }
  Standalone::StopExchanges();
}

}  // namespace

Interrupt::Interrupt() {
  struct sigaction action {};
  action.sa_handler = TakeInterrupt;
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, &formerInterrupt_);
  sigaction(SIGTERM, &action, &formerTermination_);
}

Interrupt::~Interrupt() {
  sigaction(SIGINT, &formerInterrupt_, nullptr);
  sigaction(SIGTERM, &formerTermination_, nullptr);
}

bool Interrupt::Happened() { return happened; }

}  // namespace Tavrin
