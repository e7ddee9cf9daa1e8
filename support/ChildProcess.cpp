#include "support/ChildProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include "support/Pipe.h"

namespace Tavrin {
namespace {

constexpr int kCannotRun = 127;
constexpr std::chrono::milliseconds kStep{10};

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// All that the child needs is made before the fork, and only calls that are safe there are made
/// behind it: the other threads, and what they had locked, are missing in the child.
class Plan {
 public:
  explicit Plan(const Program& program)
      : program_(program),
        argumentTexts_(program.arguments),
        environmentTexts_(program.environment.value_or(std::vector<std::string>())),
        arguments_(Pointers(argumentTexts_)),
        environment_(Pointers(environmentTexts_)) {}

  [[noreturn]] void BecomeProgram() {
    const bool isReady = IsOursWhileParentLives() && IsLaidOut();
    if (isReady) {
      execvpe(arguments_.front(), arguments_.data(),
              program_.environment ? environment_.data() : environ);
    }
    _exit(kCannotRun);
  }

 private:
  [[nodiscard]] bool IsOursWhileParentLives() const {
    if (!program_.isKilledWithThread) {
      return true;
    }
    // The parent may have ended before the first call took effect.
    return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == parent_;
  }

  [[nodiscard]] bool IsLaidOut() const {
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    const std::array streams = {program_.input, program_.output, program_.error};
    bool areOpen = nothing >= 0;
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
      const int given = streams[static_cast<std::size_t>(number)];
      areOpen = dup2(given < 0 ? nothing : given, number) >= 0 && areOpen;
    }
    return areOpen && HasTerminal() && chdir(program_.directory.c_str()) == 0;
  }

  [[nodiscard]] bool HasTerminal() const {
    if (program_.terminal.empty()) {
      return true;
    }
    // The first terminal that the leader of a session opens becomes the session's.
    const int terminal = open(program_.terminal.c_str(), O_RDWR | O_CLOEXEC);
    return terminal >= 0 && dup2(terminal, STDIN_FILENO) >= 0 && dup2(terminal, STDERR_FILENO) >= 0;
  }

  const Program& program_;
  std::vector<std::string> argumentTexts_;
  std::vector<std::string> environmentTexts_;
  std::vector<char*> arguments_;
  std::vector<char*> environment_;
  pid_t parent_ = getpid();
};

/// The pipe ends in the child when the program begins, or when it cannot.
void WaitUntilItRuns(Pipe& running) {
  running.write.Close();
  char none = 0;
  while (read(running.read.Get(), &none, 1) < 0 && errno == EINTR) {
  }
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

ProcessEnd EndOf(int status, const rusage& usage) {
  ProcessEnd end;
  end.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  end.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  end.processorSeconds = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  return end;
}

}  // namespace

ChildProcess::ChildProcess(const Program& program) : patience_(program.patience) {
  Plan plan(program);
  Pipe running = MakePipe();
  id_ = fork();
  if (id_ == 0) {
    plan.BecomeProgram();
  }
  if (id_ < 0) {
    throw std::system_error(errno, std::generic_category(),
                            "no process for " + program.arguments.front());
  }
  WaitUntilItRuns(running);
}

ChildProcess::~ChildProcess() {
  Signal(SIGTERM);
  for (auto waited = kStep; !Ended() && waited < patience_; waited += kStep) {
    std::this_thread::sleep_for(kStep);
  }
  if (!Ended()) {
    Signal(SIGKILL);
    See(0);
  }
}

void ChildProcess::Signal(int number) const {
  if (!end_) {
    kill(id_, number);
  }
}

std::optional<ProcessEnd> ChildProcess::Ended() {
  See(WNOHANG);
  return end_;
}

ProcessEnd ChildProcess::Wait() {
  See(0);
  return *end_;
}

/// With no options it waits for the end.
void ChildProcess::See(int options) {
  int status = 0;
  rusage usage{};
  pid_t seen = 0;
  do {
    seen = end_ ? 0 : wait4(id_, &status, options, &usage);
  } while (seen < 0 && errno == EINTR);
  if (seen == id_) {
    end_ = EndOf(status, usage);
  }
}

}  // namespace Tavrin
