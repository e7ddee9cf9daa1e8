#pragma once

#include <cstdint>

#include "platform/SMMInfo.h"
#include "reading/Reading.h"

namespace Tavrin {

/// The platform that has 12 nodes and up to 9 PSU slots; every other has 4 and 2.
constexpr std::int64_t kPlatform253 = 253;

/// Whether what is sent for `psu` depends on the platform of a second-generation SMM.
bool DependsOnPlatform(int psu);

/// What SMMInventory::SelectPSU() sends for `psu`, a number from 1 to 9, which is not always that
/// number: the first generation takes at most 3, the second 9 on platform 253 and 2 on any other.
/// The library does not say so. Sends nothing; the value tells a request that reaches the SMM.
PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int64_t platformId);

}  // namespace Tavrin
