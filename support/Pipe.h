#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "support/FileDescriptor.h"

namespace Tavrin {

/// Both ends of a new pipe, which programs that are started do not inherit.
struct Pipe {
  FileDescriptor read;   ///< Gives what was written, and end of file once no writing end is open.
  FileDescriptor write;  ///< Takes at least 64 KiB before it blocks.
};

/// Throws std::system_error when there is no pipe to be had.
inline Pipe MakePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "no pipe");
  }
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace Tavrin
