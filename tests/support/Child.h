#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Pipe.h"

namespace Tavrin {

/// One list behind the other, as a command line is made of parts.
std::vector<std::string> Joined(std::vector<std::string> first,
                                const std::vector<std::string>& second);

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

/// How a process ended, and what it printed.
struct Finished : ProcessEnd {
  std::string output;
  std::string error;
};

/// A child process whose input is given and whose output is taken. It is ended when the object is,
/// and killed with the thread that started it.
class Child {
 public:
  /// `environment` holds NAME=value texts and stands alone: nothing is inherited. With a terminal,
  /// standard input and error are that device; otherwise `input` is all that standard input holds.
  Child(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
        const std::string& input = {}, const std::string& terminal = {});

  pid_t Process() const { return process_.Id(); }

  /// The next line of standard output, without its end; empty at the end of output.
  std::string ReadLine() const;

  void Signal(int number) const { process_.Signal(number); }

  /// Takes all output until the process ends.
  Finished Wait();

 private:
  Pipe input_ = MakePipe();
  Pipe output_ = MakePipe();
  Pipe error_ = MakePipe();
  ChildProcess process_;
};

/// What the call says on standard error, and behind it "code N" for its exit code, for each kind of
/// standard output that takes nothing: a full disk, none at all, and a pipe that nobody reads any
/// more, where the signal for that is ignored.
std::vector<std::string> ComplaintsAboutUnwritableOutput(
    const std::vector<std::string>& call, const std::vector<std::string>& environment = {});

}  // namespace Tavrin
