#include "support/Pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace Tavrin {

Pipe MakePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "no pipe");
  }
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace Tavrin
