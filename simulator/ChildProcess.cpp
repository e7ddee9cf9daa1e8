#include "simulator/ChildProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

namespace Tavrin::Simulator {
namespace {

constexpr int kCouldNotStart = 127;
constexpr std::chrono::milliseconds kStopPatience{2000};
constexpr std::chrono::milliseconds kStopStep{10};

/// Runs in the child between fork and exec: only calls that are safe there.
[[noreturn]] void BecomeProgram(char* const* arguments, const char* directory, const char* output,
                                pid_t parent) {
  // Own process group: Ctrl-C is for the launcher, which then stops the child in order.
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(kCouldNotStart);  // The parent ended before the line above took effect.
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (chdir(directory) != 0) {
    _exit(kCouldNotStart);
  }
  const int input = open("/dev/null", O_RDONLY);
  const int file = open(output, O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
  dup2(input, STDIN_FILENO);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  execv(arguments[0], arguments);
  _exit(kCouldNotStart);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::string& directory,
                           const std::string& outputName) {
  std::vector<std::string> texts = arguments;
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    BecomeProgram(pointers.data(), directory.c_str(), outputName.c_str(), parent);
  }
  if (pid_ < 0) {
    throw std::system_error(errno, std::generic_category(), "no process for " + arguments[0]);
  }
}

ChildProcess::~ChildProcess() {
  if (Ended()) {
    return;
  }
  kill(pid_, SIGTERM);
  for (auto waited = kStopStep; waited < kStopPatience; waited += kStopStep) {
    std::this_thread::sleep_for(kStopStep);
    if (Ended()) {
      return;
    }
  }
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

std::optional<std::string> ChildProcess::Ended() {
  int status = 0;
  if (!status_ && waitpid(pid_, &status, WNOHANG) == pid_) {
    status_ = status;
  }
  if (!status_) {
    return std::nullopt;
  }
  return WIFSIGNALED(*status_) ? "by signal " + std::to_string(WTERMSIG(*status_))
                               : "with exit status " + std::to_string(WEXITSTATUS(*status_));
}

}  // namespace Tavrin::Simulator
