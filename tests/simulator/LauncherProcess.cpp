#include "tests/simulator/LauncherProcess.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> CommandLine(const std::vector<std::string>& arguments) {
  std::vector<std::string> line = {SMM_SIMULATOR};
  line.insert(line.end(), arguments.begin(), arguments.end());
  return line;
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

std::size_t LauncherProcess::FilesLeft() const {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(Directory()), fs::directory_iterator()));
}

}  // namespace Tavrin::Simulator
