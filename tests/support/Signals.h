#pragma once

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

namespace Tavrin {

/// Interrupts the thread that makes this with a caught signal, over and over for as long as this
/// lives, and leaves the signal's handler as it was. One at a time.
class Signals {
 public:
  /// `flags` are those of sigaction(), for example SA_RESTART.
  Signals(std::chrono::milliseconds period, int flags) {
    Count() = 0;
    struct sigaction action {};
    action.sa_handler = [](int /*number*/) { ++Count(); };
    action.sa_flags = flags;
    sigaction(SIGUSR1, &action, &before_);
    thread_ = std::thread([this, period, target = pthread_self()] {
      while (!ends_) {
        pthread_kill(target, SIGUSR1);
        std::this_thread::sleep_for(period);
      }
    });
    // A thread that begins holds a descriptor for a moment, which others would count.
    while (Count() == 0) {
      std::this_thread::yield();
    }
  }
  ~Signals() {
    ends_ = true;
    thread_.join();
    // The last signal may still be on its way; to ignore it once drops it.
    std::signal(SIGUSR1, SIG_IGN);
    sigaction(SIGUSR1, &before_, nullptr);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// How many the thread has caught.
  int Caught() const { return Count(); }

 private:
  static std::atomic<int>& Count() {
    static std::atomic<int> count{0};
    return count;
  }

  struct sigaction before_ {};
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace Tavrin
