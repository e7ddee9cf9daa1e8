#include "tools/smm-inventory/FailureLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "report/Describe.h"
#include "report/FailureWords.h"
#include "tools/smm-inventory/NextStep.h"

namespace Tavrin {
namespace {

/// Queries of one name that failed alike.
struct FailedQuery {
  std::string name;
  std::vector<std::string> nodes;  ///< Their nodes, where they ask about nodes.
};

/// Queries in a row that failed alike.
struct Failure {
  std::string sentence;
  std::vector<FailedQuery> queries;
};

std::string ReasonAndNextStep(const QueryOutcome& outcome) {
  return fmt::format("{}; next: {}", FailureReason(outcome.status, outcome.cause),
                     NextStep(outcome));
}

void Add(std::vector<FailedQuery>& queries, const Answer& answer) {
  if (queries.empty() || queries.back().name != answer.name) {
    queries.push_back({answer.name, {}});
  }
  if (answer.shape == Answer::Shape::RecordOfNode) {
    queries.back().nodes.push_back(fmt::to_string(answer.rows.front().number));
  }
}

std::string NameText(const FailedQuery& query) {
  return query.nodes.empty() ? query.name
                             : fmt::format("{} ({})", query.name, fmt::join(query.nodes, ", "));
}

std::vector<Failure> FailuresOf(const std::vector<Answer>& answers) {
  std::vector<Failure> failures;
  for (const Answer& answer : answers) {
    if (!answer.outcome.Succeeded()) {
      const std::string sentence = ReasonAndNextStep(answer.outcome);
      if (failures.empty() || failures.back().sentence != sentence) {
        failures.push_back({sentence, {}});
      }
      Add(failures.back().queries, answer);
    }
  }
  return failures;
}

std::string LinesBehind(const std::string& start, const Reading& reading) {
  if (reading.failure) {
    return fmt::format("smm-inventory: nothing read from {}: {}\n", reading.address,
                       ReasonAndNextStep(*reading.failure));
  }
  std::string lines;
  for (const Failure& failure : FailuresOf(AllAnswers(reading))) {
    std::vector<std::string> names;
    std::transform(failure.queries.begin(), failure.queries.end(), std::back_inserter(names),
                   NameText);
    lines += fmt::format("{}{} not read: {}\n", start, fmt::join(names, ", "), failure.sentence);
  }
  return lines;
}

}  // namespace

std::string FailureLines(const Reading& reading) { return LinesBehind("smm-inventory: ", reading); }

std::string NamedFailureLines(const Reading& reading) {
  const std::string lines =
      LinesBehind(fmt::format("smm-inventory: {}: ", reading.address), reading);
  return lines.substr(0, lines.size() - 1);
}

}  // namespace Tavrin
