#include "report/HealthLines.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"

namespace Tavrin {
namespace {

Reading FaultyReading() {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  reading.psuStatus->value.at(2).present.value = false;
  return reading;
}

Reading WarningReading() {
  Reading reading = HealthyReading();
  reading.psuStatus->value.at(2).present.value = false;
  return reading;
}

std::string LinesText(const std::vector<EnclosureReading>& enclosures,
                      const std::vector<IgnoredFinding>& ignored = {}) {
  std::string text;
  for (const HealthLine& line : HealthLines(enclosures, ignored)) {
    text += line.before + line.word + line.after + '\n';
  }
  return text;
}

TEST(HealthLines, EnclosuresComeWorstFirstAndOtherwiseAsGiven) {
  EXPECT_EQ(LinesText({{HealthyReading(), 0, "rack01", ""},
                       {FailedReading(), 1, "rack3", ""},
                       {WarningReading(), 2, "rack04", ""},
                       {HealthyReading(), 3, "rack02", ""},
                       {FaultyReading(), 4, "rack07", ""}}),
            "rack07  CRITICAL  node 2 power fault; PSU 3 missing\n"
            "rack04  WARNING   PSU 3 missing\n"
            "rack3   UNKNOWN   not read: no IPMI connection could be opened (no answer)\n"
            "rack01  OK\n"
            "rack02  OK\n");
}

TEST(HealthLines, EnclosureWithoutANameIsCalledByItsAddress) {
  EXPECT_EQ(LinesText({{HealthyReading(), 0, "", ""}}), "smm1:623  OK\n");
}

TEST(HealthLines, NameThatCouldDriveATerminalIsEscaped) {
  EXPECT_EQ(LinesText({{HealthyReading(), 0, "a\x1b[2J\n", ""}}), "a\\x1b[2J\\n  OK\n");
}

TEST(HealthLines, WordStandsApartSoThatItCanBeColoured) {
  const std::vector<HealthLine> lines = HealthLines({{WarningReading(), 0, "rack07", ""}}, {});
  ASSERT_EQ(lines.size(), 1);
  EXPECT_EQ(lines[0].severity, Severity::Warning);
  EXPECT_EQ(lines[0].before, "rack07  ");
  EXPECT_EQ(lines[0].word, "WARNING");
  EXPECT_EQ(lines[0].after, "  PSU 3 missing");
}

TEST(HealthLines, WhatASiteIgnoresMakesNoLineWorse) {
  EXPECT_EQ(
      LinesText({{WarningReading(), 0, "rack07", ""}}, {ParseIgnoredFinding("psu:3:presence")}),
      "rack07  OK\n");
}

TEST(HealthLines, NoEnclosureIsNoLine) { EXPECT_EQ(LinesText({}), ""); }

}  // namespace
}  // namespace Tavrin
