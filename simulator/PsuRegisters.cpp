#include "simulator/PsuRegisters.h"

#include <cstddef>
#include <numeric>

namespace Tavrin::Simulator {
namespace {

constexpr std::uint8_t kVersionRegister = 0xFC;
constexpr std::uint8_t kManufacturerRegister = 0x99;
constexpr std::uint8_t kPositionRegister = 0xF0;
constexpr std::size_t kPositionLength = 32;
constexpr std::uint8_t kPositionFiller = 0xC0;

Bytes PositionBytes(const PsuPosition& position) {
  Bytes bytes(kPositionLength);
  std::iota(bytes.begin(), bytes.end(), kPositionFiller);
  bytes[0] = position.first;
  bytes[1] = position.second;
  return bytes;
}

}  // namespace

Bytes RegisterBytes(const EnclosureState& enclosure, const Psu& psu, std::uint8_t number) {
  Bytes bytes;
  switch (number) {
    case kVersionRegister:
      return {psu.version.minor, psu.version.major};
    case kManufacturerRegister:
      bytes.assign(psu.manufacturer.begin(), psu.manufacturer.end());
      // A block read brings its length along; a second-generation controller takes it off and ends
      // the text with 0x00.
      if (enclosure.secondGeneration) {
        bytes.push_back(0);
      } else {
        bytes.insert(bytes.begin(), static_cast<std::uint8_t>(bytes.size()));
      }
      return bytes;
    case kPositionRegister:
      return PositionBytes(psu.position);
    default:
      return {};
  }
}

}  // namespace Tavrin::Simulator
