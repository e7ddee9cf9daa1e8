#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace Tavrin {

/// Threads wait at it until all have come, and then until they may go on.
class Gate {
 public:
  void Pass() {
    std::unique_lock<std::mutex> lock(mutex_);
    ++arrived_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return isOpen_; });
  }
  void WaitFor(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this, count] { return arrived_ == count; });
  }
  void Open() {
    const std::lock_guard<std::mutex> lock(mutex_);
    isOpen_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t arrived_ = 0;
  bool isOpen_ = false;
};

}  // namespace Tavrin
