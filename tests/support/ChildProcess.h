#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Tavrin {

/// What a finished process left.
struct Finished {
  int exitCode = -1;  ///< -1 when a signal ended it.
  int signal = 0;     ///< The signal that ended it, or 0.
  std::string output;
  std::string error;
};

/// A child process in a session of its own, so that it has no terminal but the one it is given. It
/// is ended when the object is, and killed when it does not end then.
class Child {
 public:
  /// `environment` holds NAME=value texts and stands alone: nothing is inherited. With a terminal,
  /// standard input and error are that device; otherwise `input` is all that standard input holds.
  Child(std::vector<std::string> arguments, std::vector<std::string> environment,
        const std::string& input = {}, const std::string& terminal = {});
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t Process() const { return process_; }

  /// The process ids of its own children.
  std::vector<pid_t> Children() const;

  /// The next line of standard output, without its end; empty at the end of output.
  std::string ReadLine() const;

  void Signal(int number) const;

  /// Takes all output until the process ends. One that says nothing for a minute is killed, so that
  /// it fails its test instead of holding up all of them.
  Finished Wait();

 private:
  pid_t process_ = -1;
  int output_ = -1;
  int error_ = -1;
};

/// A call of /bin/sh that runs the script, in which "$0" "$@" stands for `call`.
std::vector<std::string> AsScript(const std::string& script, const std::vector<std::string>& call,
                                  const std::string& shellOption = "-c");

/// What the system tells of a process in its file `name` of /proc; empty once the process is gone.
std::string ReadProcessFile(pid_t process, const std::string& name);

/// Whether the process has ended, be it that its parent did not yet wait for it.
bool HasEnded(pid_t process);

/// Whether the process ends within ten seconds.
bool EndsSoon(pid_t process);

/// A file for one test, readable by its owner alone; removed with the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace Tavrin
