#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin {

/// Decoders of the fan answers. Their texts are the readings as they came; "N/A" for 0 is put in by
/// a step of its own.

/// As received, with the leading byte, which the second-generation decoder passes over.
constexpr std::size_t kSecondGenerationFanLength = 8;
constexpr std::size_t kFirstGenerationFanLength = 4;

PSUFanSpeed DecodeSecondGenerationFans(const std::string& name,
                                       const std::vector<std::uint8_t>& answer);
PSUFanSpeed DecodeFirstGenerationFan(const std::string& name,
                                     const std::vector<std::uint8_t>& answer);

/// The line that shows the two fans of a second-generation PSU.
std::string SecondGenerationFansText(const PSUFanSpeed& fans);

/// The line that shows the one fan of a first-generation PSU.
std::string FirstGenerationFanText(const PSUFanSpeed& fan);

/// "N/A" in place of readings of 0; a text that the generation leaves empty stays empty.
PSUFanSpeed WithoutAbsentFans(PSUFanSpeed fans);

}  // namespace Tavrin
