#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/SMMInfo.h"

namespace Tavrin {

/// What the selection of a PSU makes of the number that was asked for.
struct PsuSelection {
  int asked = 0;
  bool isSent = false;  ///< A request is known to have reached the SMM.

  /// The PSU in the request; empty when the request names none, or when none is known to be sent.
  std::optional<std::uint8_t> sent;

  std::string remark;  ///< For people: what became of the number.
};

/// What the library sends for `psu`, a number from 1 to 9, by the generation and the platform of
/// the SMM.
PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int32_t platformId);

}  // namespace Tavrin
