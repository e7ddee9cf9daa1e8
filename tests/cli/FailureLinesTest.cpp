#include "tools/smm-inventory/FailureLines.h"

#include <gmock/gmock.h>

#include <vector>

#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;

QueryOutcome Outcome(int status, const std::string& words) {
  QueryOutcome outcome;
  outcome.status = status;
  outcome.cause.words = words;
  return outcome;
}

Reading FailedIdentity(const std::vector<QueryOutcome>& outcomes) {
  Reading reading = ExampleReading();
  reading.identity = {
      {outcomes.at(0), {}}, {outcomes.at(1), {}}, {outcomes.at(2), {}}, {outcomes.at(3), {}}};
  return reading;
}

TEST(FailureLines, SuccessLeavesNothingToExplain) {
  Reading reading = ExampleReading();
  reading.identity->name.cause.words = "a warning";
  EXPECT_EQ(FailureLines(reading), "");
}

TEST(FailureLines, LineTellsReasonAndNextStep) {
  Reading reading = ExampleReading();
  reading.powerCaps = {Outcome(StatusCode::NoUsableResult, "x"), {}};
  EXPECT_EQ(FailureLines(reading),
            "smm-inventory: power caps not read: the SMM gave no usable answer (x); next: run "
            "again; if it stays so, run with -vvv to see the answer\n");
}

TEST(FailureLines, PassWithoutQueriesIsOneLine) {
  Reading reading = FailedReading();
  reading.failure->cause.kind = Standalone::FailureCause::Unreachable;
  EXPECT_EQ(FailureLines(reading),
            "smm-inventory: nothing read from smm1:623: no IPMI connection could be opened (no "
            "answer); next: check host, port and this machine's network\n");
}

TEST(FailureLines, LikeFailuresAreToldTogether) {
  const std::string text = FailureLines(
      FailedIdentity({Outcome(2, "x"), Outcome(2, "x"), Outcome(3, "x"), Outcome(3, "y")}));
  EXPECT_THAT(text, HasSubstr("smm-inventory: machine type, serial number not read: no IPMI"));
  EXPECT_THAT(text, HasSubstr("\nsmm-inventory: firmware version not read: "));
  EXPECT_THAT(text, HasSubstr("\nsmm-inventory: name not read: "));
}

TEST(FailureLines, NodesAreToldByNumber) {
  Reading reading = ExampleReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  reading.nodeStatus->at(3) = Refused<NodeState>();
  reading.nodePower->at(3) = Refused<PowerReadings>();
  EXPECT_THAT(FailureLines(reading),
              HasSubstr("smm-inventory: node status (2, 4), node power (4) not read: "));
}

TEST(FailureLines, FailureOfAllQueriesIsOneLine) {
  EXPECT_THAT(
      FailureLines(LostReading()),
      HasSubstr("smm-inventory: platform id, PSU slots, nodes, machine type, serial number, "
                "firmware version, name, node power (1, 2), PSU fans not read: "));
}

}  // namespace
}  // namespace Tavrin
