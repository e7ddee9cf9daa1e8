#include "tools/smm-inventory/ExitCode.h"

#include <algorithm>
#include <vector>

#include "report/Describe.h"

namespace Tavrin {

int ExitCodeOf(const Reading& reading) {
  const std::vector<Answer> answers = AllAnswers(reading);
  const bool isWhole = !reading.failure &&
                       std::all_of(answers.begin(), answers.end(),
                                   [](const Answer& answer) { return answer.outcome.Succeeded(); });
  return isWhole ? ExitCode::Success : ExitCode::QueryFailed;
}

}  // namespace Tavrin
