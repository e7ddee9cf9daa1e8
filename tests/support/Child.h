#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/FileDescriptor.h"
#include "support/Pipe.h"

namespace Tavrin {

/// What a finished process left.
struct Finished {
  int exitCode = -1;  ///< -1 when a signal ended it.
  int signal = 0;     ///< The signal that ended it, or 0.
  std::string output;
  std::string error;
};

/// A child process whose input is given and whose output is taken. It is ended when the object is.
class Child {
 public:
  /// `environment` holds NAME=value texts and stands alone: nothing is inherited. With a terminal,
  /// standard input and error are that device; otherwise `input` is all that standard input holds.
  Child(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
        const std::string& input = {}, const std::string& terminal = {});

  pid_t Process() const { return process_.Id(); }

  /// The process ids of its own children.
  std::vector<pid_t> Children() const;

  /// The next line of standard output, without its end; empty at the end of output.
  std::string ReadLine() const;

  void Signal(int number) const { process_.Signal(number); }

  /// Takes all output until the process ends. One that says nothing for a minute is killed, so that
  /// it fails its test instead of holding up all of them.
  Finished Wait();

 private:
  Child(Program program, const std::string& input, Pipe in, Pipe out, Pipe err);

  FileDescriptor output_;
  FileDescriptor error_;
  ChildProcess process_;
};

/// A call of /bin/sh that runs the script, in which "$0" "$@" stands for `call`.
std::vector<std::string> AsScript(const std::string& script, const std::vector<std::string>& call,
                                  const std::string& shellOption = "-c");

/// What the system tells of a process in its file `name` of /proc; empty once the process is gone.
std::string ReadProcessFile(pid_t process, const std::string& name);

/// The process ids of a process's children, those that its first thread started.
std::vector<pid_t> ChildrenOf(pid_t process);

/// Whether the process has ended, be it that its parent did not yet wait for it.
bool HasEnded(pid_t process);

/// Whether the process ends within ten seconds.
bool EndsSoon(pid_t process);

}  // namespace Tavrin
