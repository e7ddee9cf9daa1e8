#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace Tavrin::Simulator {

/// A program run as a child: without standard input, its output in a file, stopped with the object,
/// and killed by the kernel should this process end without destroying the object.
class ChildProcess {
 public:
  /// Starts the program `arguments[0]` (a path) in `directory`; what it prints goes into the file
  /// `outputName` there.
  ChildProcess(const std::vector<std::string>& arguments, const std::string& directory,
               const std::string& outputName);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// How the child ended, in words, or nothing while it runs.
  std::optional<std::string> Ended();

 private:
  pid_t pid_ = -1;
  std::optional<int> status_;
};

}  // namespace Tavrin::Simulator
