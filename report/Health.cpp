#include "report/Health.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "report/Describe.h"
#include "report/Escape.h"
#include "report/FailureWords.h"
#include "report/SharedFailure.h"

namespace Tavrin {
namespace {

/// The last number that a record of the reading has, so that no record is left out.
template <typename Record>
std::size_t LastSlot(const std::optional<SlotQuery<Record>>& query) {
  return query && !query->value.empty() ? query->value.back().slot : 0;
}

std::size_t LastNumber(const Reading& reading, HealthKind kind) {
  switch (kind) {
    case HealthKind::Node:
      return reading.nodeStatus ? reading.nodeStatus->size() : 0;
    case HealthKind::Psu:
      return std::max(
          {LastSlot(reading.psuFans), LastSlot(reading.psuFirmware), LastSlot(reading.psuStatus)});
    case HealthKind::Enclosure:
      break;
  }
  return 0;
}

std::string ReasonOf(const Reading& reading, const HealthRule& rule) {
  if (rule.name != kUnreadRule) {
    return "";
  }
  // The rule holds where there is one of them.
  const QueryOutcome failure =
      reading.failure ? *reading.failure : SharedFailure(reading, AllAnswers(reading)).value();
  return PlainText(FailureReason(failure.status, failure.cause));
}

/// Where nothing was read, what that is needs no list.
void DropListOfUnread(std::vector<Finding>& findings) {
  const auto isWhole = [](const Finding& finding) { return finding.rule->name == kUnreadRule; };
  if (std::any_of(findings.begin(), findings.end(), isWhole)) {
    findings.erase(std::remove_if(findings.begin(), findings.end(),
                                  [isWhole](const Finding& finding) {
                                    return finding.rule->severity == Severity::Unknown &&
                                           !isWhole(finding);
                                  }),
                   findings.end());
  }
}

bool Covers(const IgnoredFinding& ignored, const Finding& finding) {
  const HealthRule& rule = *finding.rule;
  const bool isOfRule =
      ignored.rule == rule.name || (ignored.rule == kPresenceRule && IsSignOfEmptySlot(rule));
  return ignored.kind == rule.kind && isOfRule &&
         (!ignored.number || ignored.number == finding.number);
}

bool IsIgnored(const Finding& finding, const std::vector<IgnoredFinding>& ignored) {
  return std::any_of(ignored.begin(), ignored.end(), [&finding](const IgnoredFinding& candidate) {
    return Covers(candidate, finding);
  });
}

/// "2, 3, 7-12": what makes a run of three or more is told by its ends.
std::string NumbersText(const std::vector<std::size_t>& numbers) {
  std::vector<std::string> runs;
  for (std::size_t first = 0, next = 0; first < numbers.size(); first = next) {
    for (next = first + 1; next < numbers.size() && numbers[next] == numbers[next - 1] + 1;) {
      ++next;
    }
    if (next - first > 2) {
      runs.push_back(fmt::format("{}-{}", numbers[first], numbers[next - 1]));
    } else {
      std::transform(numbers.begin() + static_cast<std::ptrdiff_t>(first),
                     numbers.begin() + static_cast<std::ptrdiff_t>(next), std::back_inserter(runs),
                     [](std::size_t number) { return fmt::to_string(number); });
    }
  }
  return fmt::format("{}", fmt::join(runs, ", "));
}

std::string Where(HealthKind kind, const std::vector<std::size_t>& numbers) {
  if (kind == HealthKind::Enclosure) {
    return "";
  }
  const std::string one = kind == HealthKind::Node ? "node" : "PSU";
  if (numbers.front() == 0) {
    return one + ' ';
  }
  return fmt::format("{}{} {} ", one, numbers.size() > 1 ? "s" : "", NumbersText(numbers));
}

/// Findings of one rule, which follow each other, as one text.
std::string TextOfRule(const Finding& finding, const std::vector<std::size_t>& numbers) {
  const std::string reason = finding.reason.empty() ? "" : ": " + finding.reason;
  return fmt::format("{}{}{}", Where(finding.rule->kind, numbers), finding.rule->words, reason);
}

}  // namespace

std::string NameOf(const Finding& finding) {
  if (finding.rule->kind == HealthKind::Enclosure) {
    return fmt::format("{}:{}", KindWord(finding.rule->kind), finding.rule->name);
  }
  const std::string number = finding.number == 0 ? "*" : fmt::to_string(finding.number);
  return fmt::format("{}:{}:{}", KindWord(finding.rule->kind), number, finding.rule->name);
}

std::vector<Finding> FindingsOf(const Reading& reading,
                                const std::vector<IgnoredFinding>& ignored) {
  std::vector<Finding> findings;
  for (const HealthRule& rule : HealthRules()) {
    for (std::size_t number = 0; number <= LastNumber(reading, rule.kind); ++number) {
      if (rule.holds(reading, number)) {
        findings.push_back({&rule, number, ReasonOf(reading, rule)});
      }
    }
  }
  DropListOfUnread(findings);
  findings.erase(
      std::remove_if(findings.begin(), findings.end(),
                     [&ignored](const Finding& finding) { return IsIgnored(finding, ignored); }),
      findings.end());
  return findings;
}

Severity WorstOf(const std::vector<Finding>& findings) {
  Severity worst = Severity::Ok;
  for (const Finding& finding : findings) {
    worst = std::max(worst, finding.rule->severity);
  }
  return worst;
}

std::string FindingsText(const std::vector<Finding>& findings) {
  std::vector<std::string> texts;
  for (std::size_t first = 0, next = 0; first < findings.size(); first = next) {
    std::vector<std::size_t> numbers;
    for (; next < findings.size() && findings[next].rule == findings[first].rule; ++next) {
      numbers.push_back(findings[next].number);
    }
    texts.push_back(TextOfRule(findings[first], numbers));
  }
  return fmt::format("{}", fmt::join(texts, "; "));
}

}  // namespace Tavrin
