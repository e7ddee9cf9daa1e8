#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin {

/// The bytes of a status answer that tell the enclosures apart.
struct SmmStatusAnswer {
  std::uint8_t platformId;     ///< Byte 0; the major revision on a first-generation SMM.
  std::uint8_t enclosureType;  ///< Byte 13.
};

constexpr std::size_t kSmmStatusMinimumLength = 14;
constexpr std::int32_t kPlatform253 = 0xFD;
constexpr std::int32_t kPlatform254 = 0xFE;

/// What holds while no status answer is known.
constexpr std::int32_t kDefaultPsuSlotCount = 2;
constexpr std::uint64_t kDefaultNodeCount = 4;

/// Reads the answer, which must hold kSmmStatusMinimumLength bytes or more.
SmmStatusAnswer DecodeSmmStatus(const std::vector<std::uint8_t>& answer);

/// Whether the enclosure is a platform 253 of the EGS type.
bool IsEgs(const SmmStatusAnswer& answer);

/// Platform id and PSU slot count that the answer stands for.
SMMStatus ToSmmStatus(const SmmStatusAnswer& answer);

/// The number of compute nodes in an enclosure of this platform.
std::uint64_t NodeCountOf(std::int32_t platformId);

}  // namespace Tavrin
