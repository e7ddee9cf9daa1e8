#pragma once

#include <sys/time.h>

#include <atomic>
#include <chrono>
#include <csignal>

namespace Tavrin {

/// Interrupts the program's first thread with a caught SIGALRM, over and over for as long as this
/// lives, and leaves the signal's handler as it was. One at a time.
class Signals {
 public:
  explicit Signals(std::chrono::microseconds period) {
    caught = 0;
    struct sigaction action {};
    action.sa_handler = [](int /*number*/) { ++caught; };
    sigaction(SIGALRM, &action, &before_);
    Ring(period);
  }
  ~Signals() {
    Ring(std::chrono::microseconds(0));
    // The last signal may still be on its way; to ignore it once drops it.
    std::signal(SIGALRM, SIG_IGN);
    sigaction(SIGALRM, &before_, nullptr);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// How many were caught.
  int Caught() const { return caught; }

 private:
  static void Ring(std::chrono::microseconds period) {
    const timeval time = {period.count() / 1'000'000, period.count() % 1'000'000};
    const itimerval timer = {time, time};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  inline static std::atomic<int> caught{0};
  struct sigaction before_ {};
};

}  // namespace Tavrin
