#pragma once

#include "support/FileDescriptor.h"

namespace Tavrin {

/// Both ends of a pipe. Programs that are started inherit neither, unless as one of their standard
/// streams.
struct Pipe {
  /// Gives what was written, and end of file once every writing end is closed: this one, and what a
  /// child has of it.
  FileDescriptor read;

  /// Takes 64 KiB that nobody reads yet, and then blocks. Writing when every reading end is closed
  /// sends this process SIGPIPE.
  FileDescriptor write;
};

/// A new pipe. Throws std::system_error when this process or the system has no descriptors left.
Pipe MakePipe();

}  // namespace Tavrin
