#include "report/Nagios.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "report/Escape.h"

namespace Tavrin {
namespace {

/// The bar would end the text, a line break the line.
std::string NagiosText(const std::string& text) {
  std::string shown = PlainText(text);
  std::replace(shown.begin(), shown.end(), '|', '/');
  return shown;
}

std::string NagiosTextLine(Severity severity, const std::string& text, const std::string& numbers) {
  return fmt::format("SMM {} - {}{}{}\n", SeverityWord(severity), NagiosText(text),
                     numbers.empty() ? "" : " |", numbers);
}

/// A number with its label, without a unit and without limits of ours; it is never below 0.
std::string PowerNumber(const std::string& label, const Query<PowerReadings>& power) {
  const Number& average = power.value.average;
  return average.value ? fmt::format(" '{}'={};;;0", label, *average.value) : "";
}

std::string PowerNumbers(const Reading& reading) {
  std::string numbers;
  if (reading.chassisPower) {
    numbers += PowerNumber("chassis_power", *reading.chassisPower);
  }
  const std::size_t nodeCount = reading.nodePower ? reading.nodePower->size() : 0;
  for (std::size_t node = 1; node <= nodeCount; ++node) {
    numbers += PowerNumber(fmt::format("node{}_power", node), (*reading.nodePower)[node - 1]);
  }
  return numbers;
}

std::string WellText(const Reading& reading) {
  const std::size_t nodes = reading.nodeStatus ? reading.nodeStatus->size() : 0;
  const std::size_t slots = reading.psuStatus ? reading.psuStatus->value.size() : 0;
  return fmt::format("no fault in {} nodes and {} PSU slots", nodes, slots);
}

}  // namespace

int NagiosExitCode(Severity severity) {
  switch (severity) {
    case Severity::Ok:
      return 0;
    case Severity::Warning:
      return 1;
    case Severity::Critical:
      return 2;
    case Severity::Unknown:
      break;
  }
  return 3;
}

std::string NagiosLine(const Reading& reading, const std::vector<IgnoredFinding>& ignored) {
  const std::vector<Finding> findings = FindingsOf(reading, ignored);
  const std::string text = findings.empty() ? WellText(reading) : FindingsText(findings);
  return NagiosTextLine(WorstOf(findings), text, PowerNumbers(reading));
}

std::string NagiosProblemLine(const std::string& problem) {
  return NagiosTextLine(Severity::Unknown, problem, "");
}

}  // namespace Tavrin
