#pragma once

#include <unistd.h>

#include <utility>

namespace Tavrin {

/// Owns an open file descriptor and closes it with itself; a negative one stands for none. It can
/// be moved, which leaves none behind, and not copied.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() { Close(); }
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  FileDescriptor& operator=(FileDescriptor&&) = delete;

  /// The descriptor, which stays this object's; negative when there is none.
  [[nodiscard]] int Get() const { return descriptor_; }

  /// Closes it now; afterwards there is none.
  void Close() {
    if (descriptor_ >= 0) {
      close(std::exchange(descriptor_, -1));
    }
  }

 private:
  int descriptor_;
};

}  // namespace Tavrin
