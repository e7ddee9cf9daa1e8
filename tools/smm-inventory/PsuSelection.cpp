#include "tools/smm-inventory/PsuSelection.h"

#include <fmt/format.h>

namespace Tavrin {
namespace {

constexpr int kLargestOfFirstGeneration = 3;
constexpr std::int32_t kPlatform253 = 253;
constexpr int kLargestOfPlatform254 = 2;

}  // namespace

PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int32_t platformId) {
  const bool isSecondGeneration = generation == SMM_SECOND_GENERATION;
  if (!isSecondGeneration && psu > kLargestOfFirstGeneration) {
    return {psu, true, kLargestOfFirstGeneration,
            fmt::format("{} was sent, the highest that a first-generation SMM takes; an "
                        "acknowledgement is for that one and selects no other",
                        kLargestOfFirstGeneration)};
  }
  if (isSecondGeneration && platformId != kPlatform253 && psu > kLargestOfPlatform254) {
    return {
        psu, true, std::nullopt,
        fmt::format("no PSU was sent, since platform {} takes at most {}; an acknowledgement is "
                    "for a request without a PSU and selects nothing else",
                    platformId, kLargestOfPlatform254)};
  }
  return {psu, true, static_cast<std::uint8_t>(psu), "as asked for"};
}

}  // namespace Tavrin
