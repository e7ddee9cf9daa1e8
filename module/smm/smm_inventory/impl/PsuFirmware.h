#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin {

/// Decoders of the PSU registers that make up the firmware inventory.

constexpr std::size_t kPsuVersionMinimumLength = 2;
constexpr std::size_t kPsuManufacturerMinimumLength = 5;
constexpr std::size_t kPsuPositionMinimumLength = 2;

/// Byte 1, ".", byte 0: the register holds the version low byte first.
std::string DecodePsuVersion(const std::vector<std::uint8_t>& answer);

/// Byte 0, ".", byte 1.
std::string DecodePsuPosition(const std::vector<std::uint8_t>& answer);

/// Four raw bytes behind the block length, which Master Write-Read hands on.
std::string DecodeFirstGenerationPsuManufacturer(const std::vector<std::uint8_t>& answer);

/// Four raw bytes from the first on: the second generation strips the block length.
std::string DecodeSecondGenerationPsuManufacturer(const std::vector<std::uint8_t>& answer);

/// Puts the texts of one slot together.
PSUFwInfo ToPsuFwInfo(int slot, const std::string& version, const std::string& manufacturer,
                      const std::string& position);

/// The line that shows a record: its members, separated by blanks.
std::string PsuFwInfoText(const PSUFwInfo& info);

}  // namespace Tavrin
