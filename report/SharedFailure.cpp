#include "report/SharedFailure.h"

#include <algorithm>

#include "report/Describe.h"
#include "report/FailureWords.h"

namespace Tavrin {
namespace {

bool FailedAlike(const QueryOutcome& one, const QueryOutcome& other) {
  return !one.Succeeded() && one.status == other.status &&
         FailureReason(one.status, one.cause) == FailureReason(other.status, other.cause);
}

}  // namespace

std::optional<QueryOutcome> SharedFailure(const Reading& reading,
                                          const std::vector<Answer>& answers) {
  if (answers.empty()) {
    return reading.failure;
  }
  const QueryOutcome& last = answers.back().outcome;
  const bool isShared = std::all_of(answers.begin(), answers.end(), [&last](const Answer& answer) {
    return answer.key == kGenerationKey || FailedAlike(answer.outcome, last);
  });
  return isShared ? std::optional<QueryOutcome>(last) : std::nullopt;
}

}  // namespace Tavrin
