#pragma once

#include <string>
#include <vector>

#include "report/EnclosureReading.h"
#include "report/Health.h"

namespace Tavrin {

/// One enclosure and what is wrong with it.
struct JudgedEnclosure {
  /// The caller's, who keeps it as long as this.
  const EnclosureReading* enclosure;

  std::vector<Finding> findings;

  /// Of the worst finding.
  Severity severity;
};

/// All enclosures, worst first; those that are equally bad in the order given. `ignored` is left
/// out of the findings of each, so that an enclosure with nothing else is well.
std::vector<JudgedEnclosure> WorstFirst(const std::vector<EnclosureReading>& enclosures,
                                        const std::vector<IgnoredFinding>& ignored);

/// One line for people, such as "rack07  CRITICAL  node 2 power fault; PSU 3 missing", in pieces,
/// so that a terminal can colour the word. What it shows is printable, and has no line break.
struct HealthLine {
  Severity severity;

  /// What to call the enclosure, see ShownName(), and the blanks behind it, up to the column of the
  /// words.
  std::string before;

  /// The severity in words, see SeverityWord().
  std::string word;

  /// The findings, see FindingsText(), and the blanks before them; empty where there are none, so
  /// that no line ends in blanks.
  std::string after;
};

/// A line an enclosure, worst first, in aligned columns. The same for one enclosure as for many.
std::vector<HealthLine> HealthLines(const std::vector<EnclosureReading>& enclosures,
                                    const std::vector<IgnoredFinding>& ignored);

}  // namespace Tavrin
