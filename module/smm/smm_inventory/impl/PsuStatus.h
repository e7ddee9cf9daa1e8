#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin {

/// Decoders of the PSU status answer: one byte a flag, one bit a PSU.

constexpr std::size_t kPsuStatusMinimumLength = 6;

/// The four bytes of the answer that hold flags.
struct PsuStatusFlags {
  std::uint8_t epow = 0;
  std::uint8_t throttle = 0;
  std::uint8_t present = 0;
  std::uint8_t powerGood = 0;
};

/// Bytes 0, 1, 2 and 3.
PsuStatusFlags DecodeFirstGenerationPsuStatus(const std::vector<std::uint8_t>& answer);

/// Bytes 0, 2, 4 and 6; bytes 0, 4, 8 and 6 of an answer of exactly 10 bytes. A byte that a short
/// answer does not have reads 0.
PsuStatusFlags DecodeSecondGenerationPsuStatus(const std::vector<std::uint8_t>& answer);

/// The bits of one PSU, counted from 0.
PSUStatus ToPsuStatus(const PsuStatusFlags& flags, std::uint64_t psuIndex);

/// The rows that show the bits of `psuCount` PSUs as digits.
std::string PsuStatusFlagsText(const PsuStatusFlags& flags, std::uint64_t psuCount);

}  // namespace Tavrin
