#include "support/TemporaryDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "support/FileDescriptor.h"

namespace Tavrin {

TemporaryDirectory::TemporaryDirectory(const std::string& prefix)
    : path_((std::filesystem::temp_directory_path() / (prefix + "XXXXXX")).string()) {
  if (mkdtemp(path_.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "no temporary directory " + path_);
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void TemporaryDirectory::Write(const std::string& name, const std::string& content) const {
  const std::string path = path_ + "/" + name;
  const FileDescriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
  const bool written = file.Get() >= 0 && write(file.Get(), content.data(), content.size()) ==
                                              static_cast<ssize_t>(content.size());
  if (!written) {
    throw std::system_error(errno, std::generic_category(), path + " cannot be written");
  }
}

}  // namespace Tavrin
