#include "report/Nagios.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"

namespace Tavrin {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Nagios, ExitCodesAreThoseOfTheGuidelines) {
  EXPECT_EQ(NagiosExitCode(Severity::Ok), 0);
  EXPECT_EQ(NagiosExitCode(Severity::Warning), 1);
  EXPECT_EQ(NagiosExitCode(Severity::Critical), 2);
  EXPECT_EQ(NagiosExitCode(Severity::Unknown), 3);
}

TEST(Nagios, LineOfAWellEnclosureSaysWhatWasLookedAtAndGivesThePower) {
  EXPECT_EQ(NagiosLine(HealthyReading(), {}),
            "SMM OK - no fault in 4 nodes and 3 PSU slots | 'chassis_power'=350;;;0 "
            "'node1_power'=130;;;0 'node2_power'=210;;;0 'node3_power'=310;;;0\n");
}

TEST(Nagios, LineOfAFaultSaysWhatAndWhere) {
  Reading reading = HealthyReading();
  reading.psuStatus->value.at(2).present.value = false;
  EXPECT_THAT(NagiosLine(reading, {}), StartsWith("SMM WARNING - PSU 3 missing | 'chassis_"));
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  EXPECT_THAT(NagiosLine(reading, {}),
              StartsWith("SMM CRITICAL - node 2 power fault; PSU 3 missing | 'chassis_"));
  EXPECT_THAT(NagiosLine(reading, {ParseIgnoredFinding("psu:3:presence")}),
              StartsWith("SMM CRITICAL - node 2 power fault | 'chassis_"));
}

TEST(Nagios, FaultWinsOverWhatWasNotRead) {
  Reading reading = HealthyReading();
  reading.psuFans = Refused<std::vector<PsuFans>>();
  EXPECT_THAT(NagiosLine(reading, {}), StartsWith("SMM UNKNOWN - PSU fan status not known |"));
  reading.psuStatus->value.at(2).present.value = false;
  EXPECT_THAT(NagiosLine(reading, {}),
              StartsWith("SMM WARNING - PSU 3 missing; PSU fan status not known |"));
}

TEST(Nagios, LineWithoutPowerReadingsHasNoNumbers) {
  Reading reading = HealthyReading();
  reading.chassisPower = Refused<PowerReadings>();
  reading.nodePower.reset();
  EXPECT_EQ(NagiosLine(reading, {}), "SMM OK - no fault in 4 nodes and 3 PSU slots\n");
  EXPECT_EQ(NagiosLine(FailedReading(), {}),
            "SMM UNKNOWN - not read: no IPMI connection could be opened (no answer)\n");
}

TEST(Nagios, EnclosureWhoseEveryUnreadPartIsIgnoredGivesALine) {
  Reading reading = HealthyReading();
  reading.nodeStatus.reset();
  reading.psuStatus.reset();
  reading.psuFans.reset();
  EXPECT_THAT(NagiosLine(reading,
                         {ParseIgnoredFinding("node:*:status"), ParseIgnoredFinding("psu:*:status"),
                          ParseIgnoredFinding("psu:*:fan-status")}),
              StartsWith("SMM OK - no fault in 0 nodes and 0 PSU slots |"));
}

TEST(Nagios, NothingThatIsSaidEndsTheTextOrTheLine) {
  Reading reading = FailedReading();
  reading.failure->cause.words = "a|b\nc\r'x'=1\x1b[2J";
  EXPECT_EQ(NagiosLine(reading, {}),
            "SMM UNKNOWN - not read: no IPMI connection could be opened "
            "(a/b\\nc\\r'x'=1\\x1b[2J)\n");
}

TEST(Nagios, ProblemIsOneLineThatSaysUnknown) {
  EXPECT_EQ(NagiosProblemLine("port is \"a|b\"; expected 1 to 65535\n"),
            "SMM UNKNOWN - port is \"a/b\"; expected 1 to 65535\\n\n");
}

TEST(Nagios, PartsAreThoseOfHealthAndPower) {
  for (const Part part : kHealthParts) {
    EXPECT_NE(std::find(kNagiosParts.begin(), kNagiosParts.end(), part), kNagiosParts.end());
  }
  EXPECT_TRUE(std::is_sorted(kNagiosParts.begin(), kNagiosParts.end()));
  EXPECT_TRUE(std::is_sorted(kHealthParts.begin(), kHealthParts.end()));
}

TEST(Nagios, PowerOfTheLastNodeIsANumberToo) {
  Reading reading = HealthyReading();
  reading.nodePower->back() = reading.nodePower->front();
  EXPECT_THAT(NagiosLine(reading, {}), HasSubstr("'node4_power'=130;;;0"));
}

}  // namespace
}  // namespace Tavrin
