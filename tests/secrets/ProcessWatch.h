#pragma once

#include <sys/types.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "tests/support/Child.h"

namespace Tavrin {

/// What the system told of a process while it ran, every content that was seen.
struct Watched {
  std::string commandLines;
  std::string environments;  ///< Empty where the process is closed to this one.

  void Read(pid_t process) {
    AppendIfNew(ReadProcessFile(process, "cmdline"), commandLines);
    AppendIfNew(ReadProcessFile(process, "environ"), environments);
  }

 private:
  static void AppendIfNew(const std::string& content, std::string& seen) {
    seen += seen.find(content) == std::string::npos ? content : "";
  }
};

/// Reads, again and again until the process has ended, what the system tells of it. The first time
/// is at once, so that a process that soon ends is seen however late a thread begins.
inline std::future<Watched> Watch(pid_t process) {
  Watched watched;
  // One that was just started has no command line to show yet.
  do {
    watched.Read(process);
  } while (watched.commandLines.empty() && !HasEnded(process));
  return std::async(std::launch::async, [process, watched]() mutable {
    while (!HasEnded(process)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      watched.Read(process);
    }
    return watched;
  });
}

}  // namespace Tavrin
