#pragma once

#include <cstdint>

#include "platform/SMMInfo.h"
#include "reading/Reading.h"

namespace Tavrin {

/// What the library sends for `psu`, a number from 1 to 9, by the generation and the platform of
/// the SMM.
PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int64_t platformId);

}  // namespace Tavrin
