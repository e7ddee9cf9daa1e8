#pragma once

#include <map>
#include <string>

namespace Tavrin {
namespace Standalone {

/// Configuration values for the thread that makes this, for as long as it lives: they win over
/// those of the process, so that two threads read two SMMs with different settings. May be nested
/// on one thread; of several for one key the innermost holds. Is destroyed on the thread that made
/// it, in the opposite order.
class ThreadConfig {
 public:
  explicit ThreadConfig(std::map<std::string, int> values);
  ~ThreadConfig();
  ThreadConfig(const ThreadConfig&) = delete;
  ThreadConfig& operator=(const ThreadConfig&) = delete;

  /// Changes one value, or adds it; takes effect on the thread's next read.
  void Set(const std::string& key, int value);

  /// The innermost value of the key on the calling thread; nullptr when none of these has one.
  static const int* Find(const std::string& key);

 private:
  std::map<std::string, int> values_;
  ThreadConfig* outer_;
};

}  // namespace Standalone
}  // namespace Tavrin
