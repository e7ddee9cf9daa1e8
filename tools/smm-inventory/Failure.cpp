#include "tools/smm-inventory/Failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "tools/smm-inventory/Enclosure.h"

namespace Tavrin {
namespace {

struct StatusWords {
  int status;
  const char* name;
  const char* meaning;
  const char* nextStep;
};

constexpr std::array<StatusWords, 6> kStatusWords = {{
    {StatusCode::Success, "Success", "the query succeeded", "nothing"},
    {kExceptionStatus, "Exception", "the library gave up with an exception",
     "run again with -vvv and look at the answer"},
    {StatusCode::ConnectionKindNotAdmitted, "ConnectionKindNotAdmitted",
     "the connection kind admits no IPMI exchange", "report this as an error of the tool"},
    {StatusCode::NotConnected, "NotConnected", "no IPMI connection could be opened",
     "check host, port, user and password, that the SMM allows IPMI over LAN, and try "
     "-L operator, -C 17 or -W open-session-privilege"},
    {StatusCode::UnusableAnswer, "UnusableAnswer",
     "the SMM refused the request or gave an answer of unfit length",
     "check that the device is an SMM, and run again with -vvv to see the answer"},
    {StatusCode::NoUsableResult, "NoUsableResult", "the SMM gave no usable answer",
     "run again; if it stays so, run with -vvv to see the answer"},
}};

const StatusWords& WordsOf(int status) {
  const auto* const words =
      std::find_if(kStatusWords.begin(), kStatusWords.end(),
                   [status](const StatusWords& candidate) { return candidate.status == status; });
  return words == kStatusWords.end() ? kStatusWords.back() : *words;
}

/// Queries of one name that failed alike.
struct FailedQuery {
  std::string name;
  std::vector<std::string> nodes;  ///< Their nodes, where they ask about nodes.
};

struct Failure {
  std::string sentence;
  std::vector<FailedQuery> queries;
};

std::string FailureSentence(const Query& query) {
  return fmt::format("not read: {}; next: {}", FailureReason(query.status, query.cause),
                     WordsOf(query.status).nextStep);
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

std::string StatusName(int status) { return WordsOf(status).name; }

std::string FailureReason(int status, const std::string& cause) {
  const char* const meaning = WordsOf(status).meaning;
  return cause.empty() ? meaning : fmt::format("{} ({})", meaning, cause);
}

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

int ExitCodeOf(const std::vector<Section>& sections) {
  return FailedQueriesOf(sections).empty() ? ExitCode::Success : ExitCode::QueryFailed;
}

}  // namespace Tavrin
