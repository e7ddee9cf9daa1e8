#include "tests/simulator/LauncherProcess.h"

#include <filesystem>
#include <iterator>

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> CommandLine(const std::vector<std::string>& arguments) {
  std::vector<std::string> line = {SMM_SIMULATOR};
  line.insert(line.end(), arguments.begin(), arguments.end());
  return line;
}

}  // namespace

LauncherProcess::LauncherProcess(const std::vector<std::string>& arguments, const std::string& path)
    : TemporaryDirectory("launcher-test-"),
      Child(CommandLine(arguments), {"PATH=" + path, "TMPDIR=" + Directory()}) {}

std::size_t LauncherProcess::FilesLeft() const {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(Directory()), fs::directory_iterator()));
}

}  // namespace Tavrin::Simulator
