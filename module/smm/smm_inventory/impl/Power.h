#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin {

/// Decoders of the power answers, without the leading byte of the second generation. Their texts
/// are the readings as they came; what stands for "no reading" is replaced in a step of its own.

constexpr std::size_t kPowerLength = 6;
constexpr std::size_t kPowerCapLength = 10;

ChassisPowerCon DecodePower(const std::vector<std::uint8_t>& answer);

/// The line that shows power readings: each label directly followed by its value.
std::string PowerText(const ChassisPowerCon& power);

/// "N/A" in place of 0 and 65535, by which a node says that it has no reading.
ChassisPowerCon WithoutAbsentReadings(ChassisPowerCon power);

ChassisPowerCap DecodePowerCap(const std::vector<std::uint8_t>& answer);

/// The line that shows power caps: each label directly followed by its value.
std::string PowerCapText(const ChassisPowerCap& cap);

/// "N/A" in place of 0, by which the SMM says that no such cap is set.
ChassisPowerCap WithoutAbsentCaps(ChassisPowerCap cap);

}  // namespace Tavrin
