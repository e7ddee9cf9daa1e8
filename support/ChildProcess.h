#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace Tavrin {

/// A program to be started, and what it finds around it.
struct Program {
  /// The first one is the program: a path, or a name that is looked for along PATH. There has to be
  /// one. Every user of the machine can read them, so that no password belongs here.
  std::vector<std::string> arguments;

  /// NAME=value texts, which stand alone: not even PATH is added. Without them the program gets
  /// this process's environment, as it is when the program starts.
  std::optional<std::vector<std::string>> environment;

  /// Where it starts; a path in `arguments` counts from there. A program whose directory is not to
  /// be entered counts as one that cannot be run.
  std::string directory = ".";

  // Open descriptors for its standard streams, which stay the caller's; the child gets copies. A
  // negative one stands for /dev/null.
  int input = -1;
  int output = -1;
  int error = -1;

  /// The device that becomes its controlling terminal, its standard input and its standard error,
  /// whatever is said above. Empty: it has no terminal.
  std::string terminal;

  /// Whether the kernel kills it when the thread that started it ends, however that comes about: so
  /// it does not outlive a process that is killed itself.
  bool isKilledWithThread = false;

  /// How long it has to end in order, once the object is destroyed, before it is killed.
  std::chrono::milliseconds patience{10'000};
};

/// How a process ended, and what it took.
struct ProcessEnd {
  /// 0 to 255; -1 when a signal ended it.
  int exitCode = -1;

  /// The number of the signal that ended it, or 0.
  int signal = 0;

  /// Its own, as user and as system, and those of its children that it waited for.
  double processorSeconds = 0;
};

/// A program that runs as a child of this process, in a session of its own: Ctrl-C at this
/// process's terminal does not reach it. It begins with no signal blocked, and inherits no
/// descriptor that is marked close-on-exec. One object is for one thread at a time; programs can be
/// started on any number of threads at once.
class ChildProcess {
 public:
  /// Starts the program, and returns when it runs. One that cannot be run ends with exit code 127,
  /// as under a shell. Throws std::system_error when there is no process to be had.
  explicit ChildProcess(const Program& program);

  /// Ends the process, unless it has ended: with SIGTERM and, when the program's patience is over,
  /// with SIGKILL. Blocks until it has ended.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Its number; the system gives that to no other process before its end was seen here.
  [[nodiscard]] pid_t Id() const { return id_; }

  /// Sends it a signal. Does nothing once its end was seen: its number may be another's by then.
  void Signal(int number) const;

  /// How it ended, or nothing while it runs. Does not block.
  std::optional<ProcessEnd> Ended();

  /// Blocks until it ends. What it prints into a pipe has to be read meanwhile.
  ProcessEnd Wait();

 private:
  void See(int options);

  std::chrono::milliseconds patience_;
  pid_t id_ = -1;
  std::optional<ProcessEnd> end_;
};

}  // namespace Tavrin
