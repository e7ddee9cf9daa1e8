#pragma once

#include <sys/types.h>

#include <atomic>
#include <string>
#include <thread>

namespace Tavrin {

/// Reads, again and again while it lives, what the system tells of a process: its command line and
/// its environment block.
class ProcessWatch {
 public:
  explicit ProcessWatch(pid_t process);
  ~ProcessWatch();
  ProcessWatch(const ProcessWatch&) = delete;
  ProcessWatch& operator=(const ProcessWatch&) = delete;

  /// To be called before the results are read.
  void Stop();

  /// Every content that was seen. The block stays empty where the process is closed to this one.
  const std::string& CommandLines() const { return commandLines_; }
  const std::string& Environments() const { return environments_; }

 private:
  void Run();
  void Read();

  pid_t process_;
  std::string commandLines_;
  std::string environments_;
  std::atomic<bool> isOver_{false};
  std::thread thread_;
};

}  // namespace Tavrin
