#pragma once

#include <unistd.h>

#include <utility>

namespace Tavrin {

/// Owns a file descriptor; a negative one stands for none.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&&) = delete;

  [[nodiscard]] int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace Tavrin
