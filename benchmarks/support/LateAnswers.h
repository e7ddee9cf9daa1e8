#pragma once

#include <chrono>
#include <thread>

#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {

/// From now on the double answers as a second-generation SMM with 12 nodes and 9 PSU slots, each
/// request after 5 ms.
inline void AnswerLate() {
  constexpr std::chrono::milliseconds kAnswerTime{5};
  Double::ThePlatform().answerTo = [kAnswerTime,
                                    answerTo = Double::SampleAnswersOf(SMM_SECOND_GENERATION)](
                                       const IPMICOMMAND& request) -> const Double::Bytes& {
    std::this_thread::sleep_for(kAnswerTime);
    return answerTo(request);
  };
}

}  // namespace Tavrin
