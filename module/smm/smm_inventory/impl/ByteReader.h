#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin {

/// Reads the bytes of an answer front to back. It is the one place that knows bounds and byte
/// order: reading past the end yields nothing, makes Failed() true for good, and touches no memory
/// outside the answer. The answer must outlive the reader.
class ByteReader {
 public:
  explicit ByteReader(const std::vector<std::uint8_t>& answer) : answer_(answer) {}

  /// The next byte; 0 past the end.
  std::uint8_t Byte();

  /// The next two bytes as a little-endian number; 0 when fewer are left.
  std::uint16_t LittleEndian16();

  /// The next `count` bytes, each as one character; empty when fewer are left.
  std::string Characters(std::size_t count);

  /// The characters up to, and not including, the first byte that is not printable ASCII (0x20 to
  /// 0x7E), or up to the end; may be empty.
  std::string PrintableRun();

  /// Passes over `count` bytes.
  void Skip(std::size_t count);

  [[nodiscard]] bool Failed() const { return failed_; }

 private:
  bool Take(std::size_t count);

  const std::vector<std::uint8_t>& answer_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

}  // namespace Tavrin
