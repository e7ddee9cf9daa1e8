#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <string>
#include <system_error>

#include "fleet/HostsFile.h"
#include "support/EscapeControlBytes.h"
#include "support/FileDescriptor.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

// Far above what as many hosts as there may be take, each with a line of its own.
constexpr std::size_t kLongestHostsFile = 4U << 20U;

[[noreturn]] void RefuseSource(const std::string& source, int error) {
  throw UsageError(fmt::format("{} cannot be read ({}); expected a file that lists hosts", source,
                               std::generic_category().message(error)));
}

std::string AllOf(int descriptor, const std::string& source) {
  std::string text;
  std::array<char, 4096> bytes{};
  while (true) {
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count == 0) {
      return text;
    }
    if (count < 0 && errno != EINTR) {
      RefuseSource(source, errno);
    }
    text.append(bytes.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
    if (text.size() > kLongestHostsFile) {
      throw UsageError(fmt::format("{} is longer than {} bytes; expected at most that", source,
                                   kLongestHostsFile));
    }
  }
}

}  // namespace

HostsFile ReadHostsFile(const std::string& path) {
  if (path == "-") {
    const std::string source = "hosts file on standard input";
    return ParseHostsFile(AllOf(STDIN_FILENO, source), source);
  }
  const std::string source = fmt::format("hosts file \"{}\"", EscapeControlBytes(path));
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (file.Get() < 0) {
    RefuseSource(source, errno);
  }
  return ParseHostsFile(AllOf(file.Get(), source), source);
}

}  // namespace Tavrin
