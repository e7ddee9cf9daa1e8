#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace Tavrin {
namespace {

constexpr int kSilence = 60'000;  // Milliseconds.

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    read = ends[0];
    write = ends[1];
  }
  int read = -1;
  int write = -1;
};

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// Appends what the descriptor has; false at its end.
bool Take(int descriptor, std::string& text) {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(descriptor, buffer.data(), buffer.size());
  text.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  return count > 0;
}

}  // namespace

Child::Child(std::vector<std::string> arguments, std::vector<std::string> environment,
             const std::string& input, const std::string& terminal) {
  const Pipe in;
  const Pipe out;
  const Pipe err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.read, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.write, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.write, STDERR_FILENO);
  if (!terminal.empty()) {
    // The first terminal that the leader of a session opens becomes the session's.
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, terminal.c_str(), O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  const int failure = posix_spawn(&process_, arguments.front().c_str(), &actions, &attributes,
                                  Pointers(arguments).data(), Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  close(in.read);
  close(out.write);
  close(err.write);
  output_ = out.read;
  error_ = err.read;
  if (write(in.write, input.data(), input.size()) < 0 || close(in.write) != 0 || failure != 0) {
    throw std::runtime_error("cannot start " + arguments.front());
  }
}

Child::~Child() {
  if (process_ > 0) {
    kill(process_, SIGTERM);
    if (!EndsSoon(process_)) {
      kill(process_, SIGKILL);
    }
    waitpid(process_, nullptr, 0);
  }
  close(output_);
  close(error_);
}

std::string Child::ReadLine() const {
  std::string line;
  char byte = 0;
  while (read(output_, &byte, 1) == 1 && byte != '\n') {
    line += byte;
  }
  return line;
}

std::vector<pid_t> Child::Children() const {
  const std::string thread = std::to_string(process_);
  std::istringstream children(ReadProcessFile(process_, "task/" + thread + "/children"));
  return {std::istream_iterator<pid_t>(children), {}};
}

void Child::Signal(int number) const { kill(process_, number); }

Finished Child::Wait() {
  Finished finished;
  std::array<pollfd, 2> sources = {{{output_, POLLIN, 0}, {error_, POLLIN, 0}}};
  std::array<std::string*, 2> texts = {&finished.output, &finished.error};
  while (sources[0].fd >= 0 || sources[1].fd >= 0) {
    if (poll(sources.data(), sources.size(), kSilence) == 0) {
      kill(process_, SIGKILL);
      break;
    }
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (sources[i].fd >= 0 && sources[i].revents != 0 && !Take(sources[i].fd, *texts[i])) {
        sources[i].fd = -1;
      }
    }
  }
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = -1;
  finished.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  finished.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return finished;
}

std::vector<std::string> AsScript(const std::string& script, const std::vector<std::string>& call,
                                  const std::string& shellOption) {
  std::vector<std::string> whole = {"/bin/sh", shellOption, script};
  whole.insert(whole.end(), call.begin(), call.end());
  return whole;
}

std::string ReadProcessFile(pid_t process, const std::string& name) {
  const std::ifstream file("/proc/" + std::to_string(process) + "/" + name, std::ios::binary);
  // A process may vanish between opening and reading, which an iterator over the file would throw.
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

bool HasEnded(pid_t process) {
  const std::string text = ReadProcessFile(process, "stat");
  const std::size_t name = text.rfind(") ");
  return name == std::string::npos || text.at(name + 2) == 'Z' || text.at(name + 2) == 'X';
}

bool EndsSoon(pid_t process) {
  constexpr std::chrono::seconds patience{10};
  const auto giveUp = std::chrono::steady_clock::now() + patience;
  while (!HasEnded(process) && std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return HasEnded(process);
}

TemporaryFile::TemporaryFile(const std::string& content) {
  path_ = "/tmp/poveixme-test-XXXXXX";
  close(mkstemp(path_.data()));
  std::ofstream(path_, std::ios::binary) << content;
}

TemporaryFile::~TemporaryFile() { unlink(path_.c_str()); }

}  // namespace Tavrin
