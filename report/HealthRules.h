#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "reading/Reading.h"

namespace Tavrin {

/// How bad it is; of two the later one is worse. What is faulty for certain wins over what is not
/// known, so that a fault is never hidden behind a query that failed.
enum class Severity { Ok, Unknown, Warning, Critical };

/// "OK", "UNKNOWN", "WARNING" or "CRITICAL".
std::string_view SeverityWord(Severity severity);

/// What a rule is about, by the first word of its name.
enum class HealthKind { Node, Psu, Enclosure };

/// "node", "psu" or "enclosure", as in the names of rules.
std::string_view KindWord(HealthKind kind);

/// One thing that an SMM can state, or leave unread, and that somebody should look at. There is no
/// threshold of ours: the SMM states no unit and no limit for any reading.
struct HealthRule {
  HealthKind kind;

  /// In lower case with hyphens; of its own within its kind. Never changes its meaning, since sites
  /// write it into their configuration.
  std::string_view name;

  /// Never Ok.
  Severity severity;

  /// What is wrong, as it follows "node 2" or "PSU 3".
  std::string_view words;

  /// Why it is judged like this, in one sentence.
  std::string_view why;

  /// Whether it holds for node or PSU `number`, counted from 1. With 0 it is asked about all of
  /// them together, which holds where their records are missing altogether. Rules about the
  /// enclosure are asked with 0 alone.
  bool (*holds)(const Reading& reading, std::size_t number);
};

/// Every rule, worst first. Lives as long as the program; may be called on any thread.
const std::vector<HealthRule>& HealthRules();

/// The rule that says that no PSU is in a slot. Whoever ignores it of a slot that the site leaves
/// empty means as well what else an empty slot gives, see IsSignOfEmptySlot().
constexpr std::string_view kPresenceRule = "presence";

/// The rule that says that a whole reading failed.
constexpr std::string_view kUnreadRule = "unread";

/// Whether the rule tells of what an empty slot looks like, beside the presence flag: its fan is
/// not present, its firmware does not answer.
bool IsSignOfEmptySlot(const HealthRule& rule);

}  // namespace Tavrin
