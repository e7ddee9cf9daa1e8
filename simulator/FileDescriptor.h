#pragma once

#include <unistd.h>

#include <utility>

namespace Tavrin::Simulator {

/// Owns an open file descriptor.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }

  [[nodiscard]] int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace Tavrin::Simulator
