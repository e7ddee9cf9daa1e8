#pragma once

#include <map>
#include <memory>
#include <string>

namespace Tavrin {
namespace Standalone {

/// Configuration values for the thread that makes this, for as long as it lives, so that two
/// threads of a process read two SMMs with different settings. For that thread they win over those
/// of the process (ConfigControl.h, then the environment, which is not looked at for a key that has
/// a value here); other threads never see them, not even those that it starts.
///
/// May be nested; of several values for one key the innermost holds, and what held before holds
/// again when it ends. Is used and destroyed on the thread that made it, and several of them in the
/// opposite order. A child of fork() keeps those of the thread that forked.
class ThreadConfig {
 public:
  /// Keys and ranges are those of the README's table of configuration keys. What reads a value
  /// checks its range, and says so in words when it does not hold.
  explicit ThreadConfig(std::map<std::string, int> values);
  ~ThreadConfig();
  ThreadConfig(const ThreadConfig&) = delete;
  ThreadConfig& operator=(const ThreadConfig&) = delete;

  /// Changes one value, or adds it; takes effect on the thread's next read, unless a value that is
  /// nested further in holds.
  void Set(const std::string& key, int value);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Standalone
}  // namespace Tavrin
