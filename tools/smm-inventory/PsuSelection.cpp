#include "tools/smm-inventory/PsuSelection.h"

#include <fmt/format.h>

namespace Tavrin {
namespace {

constexpr int kLargestOfFirstGeneration = 3;
constexpr std::int32_t kPlatform253 = 253;
constexpr int kLargestOfPlatform253 = 9;
constexpr int kLargestOfPlatform254 = 2;

}  // namespace

PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int32_t platformId) {
  const bool isSecondGeneration = generation == SMM_SECOND_GENERATION;
  if (!isSecondGeneration && psu > kLargestOfFirstGeneration) {
    return {psu, kLargestOfFirstGeneration,
            fmt::format("clamped: a first-generation request holds at most {}",
                        kLargestOfFirstGeneration)};
  }
  const int largest = platformId == kPlatform253 ? kLargestOfPlatform253 : kLargestOfPlatform254;
  if (isSecondGeneration && psu > largest) {
    return {
        psu, std::nullopt,
        fmt::format("left out of the request: platform {} takes at most {}", platformId, largest)};
  }
  const auto sent = static_cast<std::uint8_t>(psu);
  return {psu, sent, psu < 0 ? "negative: its low 8 bits are sent" : "as asked for"};
}

}  // namespace Tavrin
