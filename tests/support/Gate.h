#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace Tavrin {

/// Threads wait at it until it is opened; who opens it can first wait until all have come.
class Gate {
 public:
  void Pass() {
    std::unique_lock<std::mutex> lock(mutex_);
    ++arrived_;
    arrival_.notify_one();
    opening_.wait(lock, [this] { return isOpen_; });
  }
  void WaitFor(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    arrival_.wait(lock, [this, count] { return arrived_ == count; });
  }
  void Open() {
    const std::lock_guard<std::mutex> lock(mutex_);
    isOpen_ = true;
    opening_.notify_all();
  }

 private:
  std::mutex mutex_;
  // Two, so that an arrival wakes nobody who waits for the opening.
  std::condition_variable arrival_;
  std::condition_variable opening_;
  std::size_t arrived_ = 0;
  bool isOpen_ = false;
};

}  // namespace Tavrin
