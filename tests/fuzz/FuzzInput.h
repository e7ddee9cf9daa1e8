#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin::Fuzz {

/// The bytes that the fuzzer made up, front to back. Behind their end, every byte is 0.
class FuzzInput {
 public:
  FuzzInput() = default;
  FuzzInput(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes, bytes + size) {}

  [[nodiscard]] bool AtEnd() const { return position_ == bytes_.size(); }

  std::uint8_t Byte() { return AtEnd() ? std::uint8_t{0} : bytes_[position_++]; }

  /// One of the values listed.
  template <typename Value>
  Value OneOf(const std::vector<Value>& values) {
    return values[Byte() % values.size()];
  }

  /// The next `count` bytes, or fewer at the end.
  std::vector<std::uint8_t> Bytes(std::size_t count) {
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(position_);
    const std::size_t taken = std::min(count, bytes_.size() - position_);
    position_ += taken;
    return {begin, begin + static_cast<std::ptrdiff_t>(taken)};
  }

  std::vector<std::uint8_t> Rest() { return Bytes(bytes_.size()); }

  std::string RestAsText() {
    const std::vector<std::uint8_t> rest = Rest();
    return {rest.begin(), rest.end()};
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t position_ = 0;
};

}  // namespace Tavrin::Fuzz
