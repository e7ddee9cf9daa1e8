#include "tests/simulator/LauncherProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// A process that has ended but was not yet waited for by its parent counts as ended.
bool HasEnded(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/stat");
  std::string text{std::istreambuf_iterator<char>(status), {}};
  const std::size_t name = text.rfind(") ");
  return name == std::string::npos || text.at(name + 2) == 'Z' || text.at(name + 2) == 'X';
}

}  // namespace

LauncherProcess::LauncherProcess(const std::vector<std::string>& arguments, const std::string& path)
    : directory_((fs::temp_directory_path() / "launcher-test-XXXXXX").string()) {
  std::array<int, 2> output{};
  std::array<int, 2> error{};
  if (mkdtemp(directory_.data()) == nullptr || pipe2(output.data(), O_CLOEXEC) != 0 ||
      pipe2(error.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no directory or no pipe");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error[1], STDERR_FILENO);
  std::vector<std::string> texts = {SMM_SIMULATOR};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = {"PATH=" + path, "TMPDIR=" + directory_};
  const int failure = posix_spawn(&process_, SMM_SIMULATOR, &actions, nullptr,
                                  Pointers(texts).data(), Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);
  close(error[1]);
  output_ = output[0];
  error_ = error[0];
  if (failure != 0) {
    throw std::runtime_error("cannot start " SMM_SIMULATOR);
  }
}

LauncherProcess::~LauncherProcess() {
  if (process_ > 0) {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }
  close(output_);
  close(error_);
  fs::remove_all(directory_);
}

std::string LauncherProcess::ReadLine() const {
  std::string line;
  char byte = 0;
  while (read(output_, &byte, 1) == 1 && byte != '\n') {
    line += byte;
  }
  return line;
}

std::string LauncherProcess::ReadAddress() const {
  const std::string line = ReadLine();
  return line.substr(line.rfind(' ') + 1);
}

void LauncherProcess::Signal(int number) const { kill(process_, number); }

Finished LauncherProcess::Wait() {
  Finished finished;
  char byte = 0;
  while (read(error_, &byte, 1) == 1) {
    finished.error += byte;
  }
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = -1;
  finished.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return finished;
}

std::vector<pid_t> LauncherProcess::Children() const {
  const std::string process = std::to_string(process_);
  std::ifstream children("/proc/" + process + "/task/" + process + "/children");
  return {std::istream_iterator<pid_t>(children), {}};
}

std::size_t LauncherProcess::FilesLeft() const {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory_), fs::directory_iterator()));
}

bool EndsSoon(pid_t process) {
  for (int attempt = 0; attempt < 200; ++attempt) {
    if (HasEnded(process)) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

}  // namespace Tavrin::Simulator
