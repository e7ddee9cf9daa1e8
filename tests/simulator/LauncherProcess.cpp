#include "tests/simulator/LauncherProcess.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> CommandLine(const std::vector<std::string>& arguments) {
  std::vector<std::string> line = {SMM_SIMULATOR};
  line.insert(line.end(), arguments.begin(), arguments.end());
  return line;
}

/// A process that has ended but was not yet waited for by its parent counts as ended.
bool HasEnded(pid_t process) {
  const std::string text = ReadProcessFile(process, "stat");
  const std::size_t name = text.rfind(") ");
  return name == std::string::npos || text.at(name + 2) == 'Z' || text.at(name + 2) == 'X';
}

}  // namespace

TemporaryDirectory::TemporaryDirectory()
    : path_((fs::temp_directory_path() / "launcher-test-XXXXXX").string()) {
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::runtime_error("no directory " + path_);
  }
}

TemporaryDirectory::~TemporaryDirectory() { fs::remove_all(path_); }

LauncherProcess::LauncherProcess(const std::vector<std::string>& arguments, const std::string& path)
    : Child(CommandLine(arguments), {"PATH=" + path, "TMPDIR=" + Directory()}) {}

std::vector<pid_t> LauncherProcess::Children() const {
  const std::string process = std::to_string(Process());
  std::ifstream children("/proc/" + process + "/task/" + process + "/children");
  return {std::istream_iterator<pid_t>(children), {}};
}

std::size_t LauncherProcess::FilesLeft() const {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(Directory()), fs::directory_iterator()));
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
