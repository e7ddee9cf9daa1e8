#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "reading/Reading.h"
#include "report/HealthRules.h"

namespace Tavrin {

// Whether an enclosure is well, as far as its SMM states it: docs/health.md has the rules. What
// could not be read is never taken for well; what the SMM has no answer for at all, such as the
// flags of a ninth PSU, is neither well nor unknown, and not mentioned.

/// What has to be read to judge health, beside the detection that every pass begins with; in the
/// order of Part. A part of these that a reading lacks counts as not read.
inline constexpr std::array kHealthParts = {Part::NodeStatus, Part::PsuFans, Part::PsuStatus};

/// One rule that holds.
struct Finding {
  /// One of HealthRules().
  const HealthRule* rule;

  /// Of the node or PSU, counted from 1; 0 where it is of all together, or of the enclosure.
  std::size_t number;

  /// Why, where the rule's words do not tell: the reason why nothing was read. Printable, mostly
  /// empty.
  std::string reason;
};

/// A finding that a site knows of, and does not want to be told again.
struct IgnoredFinding {
  /// Node or Psu.
  HealthKind kind;

  /// Of the node or PSU, counted from 1; nothing stands for every one.
  std::optional<std::size_t> number;

  /// The rule's name.
  std::string rule;
};

/// Reads KIND:NUMBER:RULE, such as "psu:9:presence" or "node:*:status": a kind of node or psu, a
/// number from 1 to 12 or 1 to 9, or * for every one, and the name of a rule of that kind. That an
/// enclosure was not read cannot be ignored. Throws std::invalid_argument, whose text names the
/// value and what was expected.
IgnoredFinding ParseIgnoredFinding(const std::string& text);

/// "psu:9:presence", as ParseIgnoredFinding() takes it; "psu:*:status" where it is of all together,
/// and "enclosure:unread", which it does not take.
std::string NameOf(const Finding& finding);

/// What is wrong with the enclosure, worst first, and alike by rule and number. Empty where all is
/// well. Where nothing was read that is told once, with the reason. An empty slot is told once:
/// neither its fan nor its firmware counts as a fault. Whoever ignores the presence of a PSU
/// ignores with it what else an empty slot gives.
std::vector<Finding> FindingsOf(const Reading& reading,
                                const std::vector<IgnoredFinding>& ignored = {});

/// That of the worst finding; Ok without any.
Severity WorstOf(const std::vector<Finding>& findings);

/// The findings in words and where, such as "nodes 2, 3 power fault; PSU 3 missing". Printable, one
/// line; empty without any.
std::string FindingsText(const std::vector<Finding>& findings);

}  // namespace Tavrin
