#include "module/smm/smm_inventory/impl/ByteReader.h"

#include <algorithm>

namespace Tavrin {
namespace {

bool IsPrintableAscii(std::uint8_t byte) { return byte >= 0x20 && byte <= 0x7E; }

}  // namespace

std::uint8_t ByteReader::Byte() { return Take(1) ? answer_[position_ - 1] : std::uint8_t{0}; }

std::uint16_t ByteReader::LittleEndian16() {
  if (!Take(2)) {
    return 0;
  }
  return static_cast<std::uint16_t>(answer_[position_ - 2] | answer_[position_ - 1] << 8);
}

std::string ByteReader::Characters(std::size_t count) {
  if (!Take(count)) {
    return {};
  }
  const auto end = answer_.begin() + static_cast<std::ptrdiff_t>(position_);
  return {end - static_cast<std::ptrdiff_t>(count), end};
}

std::string ByteReader::PrintableRun() {
  const auto begin = answer_.begin() + static_cast<std::ptrdiff_t>(position_);
  const auto end = std::find_if_not(begin, answer_.end(), IsPrintableAscii);
  return Characters(static_cast<std::size_t>(end - begin));
}

void ByteReader::Skip(std::size_t count) { Take(count); }

bool ByteReader::Take(std::size_t count) {
  if (failed_ || count > answer_.size() - position_) {
    failed_ = true;
    return false;
  }
  position_ += count;
  return true;
}

}  // namespace Tavrin
