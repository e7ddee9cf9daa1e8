#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/SMMInfo.h"

namespace Tavrin {

/// What the selection of a PSU makes of the number that was asked for.
struct PsuSelection {
  int asked = 0;

  /// The PSU in the request; empty when the request names none, or when what it names is not known.
  std::optional<std::uint8_t> sent;

  std::string remark;  ///< For people: what became of the number.
};

/// What the library sends for `psu`, by the generation and the platform of the SMM.
PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int32_t platformId);

}  // namespace Tavrin
