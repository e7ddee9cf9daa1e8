#include "report/HealthLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace Tavrin {
namespace {

constexpr const char* kHealthGap = "  ";

JudgedEnclosure Judged(const EnclosureReading& enclosure,
                       const std::vector<IgnoredFinding>& ignored) {
  std::vector<Finding> findings = FindingsOf(enclosure.reading, ignored);
  const Severity severity = WorstOf(findings);
  return {&enclosure, std::move(findings), severity};
}

/// How wide the names and the words of all lines are.
struct HealthWidths {
  std::size_t name = 0;
  std::size_t word = 0;
};

HealthWidths WidthsOf(const std::vector<JudgedEnclosure>& enclosures) {
  HealthWidths widths;
  for (const JudgedEnclosure& judged : enclosures) {
    widths.name = std::max(widths.name, ShownName(*judged.enclosure).size());
    widths.word = std::max(widths.word, SeverityWord(judged.severity).size());
  }
  return widths;
}

HealthLine LineOf(const JudgedEnclosure& judged, const HealthWidths& widths) {
  const std::string_view word = SeverityWord(judged.severity);
  HealthLine line{judged.severity,
                  fmt::format("{:<{}}{}", ShownName(*judged.enclosure), widths.name, kHealthGap),
                  std::string(word), ""};
  if (!judged.findings.empty()) {
    line.after =
        std::string(widths.word - word.size(), ' ') + kHealthGap + FindingsText(judged.findings);
  }
  return line;
}

}  // namespace

std::vector<JudgedEnclosure> WorstFirst(const std::vector<EnclosureReading>& enclosures,
                                        const std::vector<IgnoredFinding>& ignored) {
  std::vector<JudgedEnclosure> all;
  all.reserve(enclosures.size());
  for (const EnclosureReading& enclosure : enclosures) {
    all.push_back(Judged(enclosure, ignored));
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const JudgedEnclosure& one, const JudgedEnclosure& other) {
                     return one.severity > other.severity;
                   });
  return all;
}

std::vector<HealthLine> HealthLines(const std::vector<EnclosureReading>& enclosures,
                                    const std::vector<IgnoredFinding>& ignored) {
  const std::vector<JudgedEnclosure> all = WorstFirst(enclosures, ignored);
  const HealthWidths widths = WidthsOf(all);
  std::vector<HealthLine> lines;
  lines.reserve(all.size());
  for (const JudgedEnclosure& judged : all) {
    lines.push_back(LineOf(judged, widths));
  }
  return lines;
}

}  // namespace Tavrin
