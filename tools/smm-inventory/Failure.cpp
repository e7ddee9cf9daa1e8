#include "tools/smm-inventory/Failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tools/smm-inventory/FailureWords.h"

namespace Tavrin {
namespace {

/// Queries of one name that failed alike.
struct FailedQuery {
  std::string name;
  std::vector<std::string> nodes;  ///< Their nodes, where they ask about nodes.
};

struct Failure {
  std::string sentence;
  std::vector<FailedQuery> queries;
};

std::string ReasonAndNextStep(int status, const Cause& cause) {
  return fmt::format("{}; next: {}", FailureReason(status, cause), NextStep(status, cause));
}

std::string FailureSentence(const Query& query) {
  return "not read: " + ReasonAndNextStep(query.status, query.cause);
}

void Add(std::vector<FailedQuery>& queries, const Query& query) {
  if (queries.empty() || queries.back().name != query.name) {
    queries.push_back({query.name, {}});
  }
  if (query.shape == Query::Shape::RecordOfNode) {
    queries.back().nodes.push_back(fmt::to_string(query.rows.front().number));
  }
}

std::string NameText(const FailedQuery& query) {
  return query.nodes.empty() ? query.name
                             : fmt::format("{} ({})", query.name, fmt::join(query.nodes, ", "));
}

std::vector<Query> FailedQueriesOf(const std::vector<Section>& sections) {
  std::vector<Query> failed;
  for (const Section& section : sections) {
    std::copy_if(section.queries.begin(), section.queries.end(), std::back_inserter(failed),
                 [](const Query& query) { return query.status != StatusCode::Success; });
  }
  return failed;
}

}  // namespace

void PrintFailures(std::ostream& out, const std::vector<Section>& sections) {
  std::vector<Failure> failures;
  for (const Query& query : FailedQueriesOf(sections)) {
    const std::string sentence = FailureSentence(query);
    if (failures.empty() || failures.back().sentence != sentence) {
      failures.push_back({sentence, {}});
    }
    Add(failures.back().queries, query);
  }
  for (const Failure& failure : failures) {
    std::vector<std::string> names;
    std::transform(failure.queries.begin(), failure.queries.end(), std::back_inserter(names),
                   NameText);
    out << fmt::format("smm-inventory: {} {}\n", fmt::join(names, ", "), failure.sentence);
  }
  out << std::flush;
}

void PrintNothingRead(std::ostream& out, const std::string& address, int status,
                      const Cause& cause) {
  out << fmt::format("smm-inventory: nothing read from {}: {}\n", address,
                     ReasonAndNextStep(status, cause))
      << std::flush;
}

int ExitCodeOf(const std::vector<Section>& sections) {
  return FailedQueriesOf(sections).empty() ? ExitCode::Success : ExitCode::QueryFailed;
}

}  // namespace Tavrin
