#include "reading/SelectionPrediction.h"

#include <fmt/format.h>

#include "reading/Decode.h"

namespace Tavrin {
namespace {

constexpr int kLargestOfFirstGeneration = 3;
constexpr int kLargestOfPlatform254 = 2;

}  // namespace

bool DependsOnPlatform(int psu) { return psu > kLargestOfPlatform254; }

PsuSelection PredictPsuSelection(int psu, SMMIype generation, std::int64_t platformId) {
  const bool isSecondGeneration = generation == SMM_SECOND_GENERATION;
  if (!isSecondGeneration && psu > kLargestOfFirstGeneration) {
    return {psu, true, NumberOf(kLargestOfFirstGeneration),
            fmt::format("{} was sent, the highest that a first-generation SMM takes; an "
                        "acknowledgement is for that one and selects no other",
                        kLargestOfFirstGeneration)};
  }
  if (isSecondGeneration && platformId != kPlatform253 && DependsOnPlatform(psu)) {
    return {
        psu, true, Number{std::nullopt, "", Absence::NotReported},
        fmt::format("no PSU was sent, since platform {} takes at most {}; an acknowledgement is "
                    "for a request without a PSU and selects nothing else",
                    platformId, kLargestOfPlatform254)};
  }
  return {psu, true, NumberOf(psu), "as asked for"};
}

}  // namespace Tavrin
