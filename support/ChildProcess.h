#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace Tavrin {

/// A program to be started, and what it finds around it.
struct Program {
  /// The first one is the program: a path, or a name that is looked for along PATH.
  std::vector<std::string> arguments;

  /// NAME=value texts, which stand alone. Without them the program gets this process's environment.
  std::optional<std::vector<std::string>> environment;

  std::string directory = ".";  ///< Where it starts.

  // Open descriptors for its standard streams, which stay the caller's. A negative one stands for
  // /dev/null.
  int input = -1;
  int output = -1;
  int error = -1;

  /// The device that becomes its controlling terminal, its standard input and its standard error,
  /// whatever is said above. Empty: it has no terminal.
  std::string terminal;

  /// Whether the kernel kills it when the thread that started it ends, however that comes about.
  bool isKilledWithThread = false;

  /// How long it has to end in order before it is killed.
  std::chrono::milliseconds patience{10'000};
};

/// How a process ended, and what it took.
struct ProcessEnd {
  int exitCode = -1;            ///< -1 when a signal ended it.
  int signal = 0;               ///< The signal that ended it, or 0.
  double processorSeconds = 0;  ///< Its own, and those of its children that it waited for.
};

/// A program that runs as a child of this process, in a session of its own: Ctrl-C at this
/// process's terminal does not reach it. It blocks no signal.
class ChildProcess {
 public:
  /// Starts the program, and returns when it runs. One that cannot be run ends with exit code 127,
  /// as under a shell. Throws std::system_error when there is no process to be had.
  explicit ChildProcess(const Program& program);

  /// Ends the process, unless it has ended: with SIGTERM and, when the program's patience is over,
  /// with SIGKILL.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Stays the process's own until its end was seen here.
  [[nodiscard]] pid_t Id() const { return id_; }

  /// Sends it a signal, unless its end was seen.
  void Signal(int number) const;

  /// How it ended, or nothing while it runs.
  std::optional<ProcessEnd> Ended();

  /// Blocks until it ends.
  ProcessEnd Wait();

 private:
  void See(int options);

  std::chrono::milliseconds patience_;
  pid_t id_ = -1;
  std::optional<ProcessEnd> end_;
};

}  // namespace Tavrin
