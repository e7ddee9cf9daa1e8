#pragma once

#include <unistd.h>

#include <utility>

namespace Tavrin {

/// Owns an open file descriptor, as open(2) and its like return one, and closes it at the end of
/// its own life. A negative one stands for none: what opens one can hand over its result as it is,
/// and the caller asks Get() whether that went well, with `errno` still as it was left. Nothing
/// here throws. One object is for one thread at a time.
class FileDescriptor {
 public:
  /// Takes over a descriptor that nobody else closes.
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}

  /// Closes what there is, as Close() does.
  ~FileDescriptor() { Close(); }

  /// Takes the descriptor over and leaves none behind. There is no assignment, which would have to
  /// close one in passing.
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  FileDescriptor& operator=(FileDescriptor&&) = delete;

  /// The descriptor, which stays this object's: it may be used, but not closed, for as long as the
  /// object lives. Negative when there is none.
  [[nodiscard]] int Get() const { return descriptor_; }

  /// Closes it before the object's end; afterwards there is none, and a second call does nothing.
  /// An error of close(2) is dropped: who must know that a file was written asks fsync(2) before.
  void Close() {
    if (descriptor_ >= 0) {
      close(std::exchange(descriptor_, -1));
    }
  }

 private:
  int descriptor_;
};

}  // namespace Tavrin
