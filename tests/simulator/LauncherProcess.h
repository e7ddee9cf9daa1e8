#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Tavrin::Simulator {

/// What a finished launcher left.
struct Finished {
  int exitCode = -1;  ///< -1 when a signal ended it.
  std::string error;
};

/// A launcher with a temporary directory of its own, so that what it leaves there shows. It is
/// ended, and the directory removed, when the object is destroyed.
class LauncherProcess {
 public:
  explicit LauncherProcess(const std::vector<std::string>& arguments,
                           const std::string& path = "/usr/bin:/bin");
  ~LauncherProcess();
  LauncherProcess(const LauncherProcess&) = delete;
  LauncherProcess& operator=(const LauncherProcess&) = delete;

  /// The next line of standard output without its end; empty when there is no more.
  std::string ReadLine() const;

  /// The address from the line that tells that the launcher is ready, which this reads.
  std::string ReadAddress() const;

  void Signal(int number) const;
  Finished Wait();

  /// The process ids of its children.
  std::vector<pid_t> Children() const;

  const std::string& TemporaryDirectory() const { return directory_; }

  /// How many entries its temporary directory has.
  std::size_t FilesLeft() const;

 private:
  std::string directory_;
  pid_t process_ = -1;
  int output_ = -1;
  int error_ = -1;
};

/// Whether the process ends within two seconds.
bool EndsSoon(pid_t process);

}  // namespace Tavrin::Simulator
