#include "tools/smm-inventory/Report.h"

#include <gmock/gmock.h>

#include <sstream>

namespace Tavrin {
namespace {

using testing::HasSubstr;

std::string Printed(const std::vector<Field>& fields) {
  std::ostringstream out;
  PrintFields(out, fields);
  return out.str();
}

std::string Failures(const std::vector<Field>& fields) {
  std::ostringstream out;
  PrintFailures(out, fields);
  return out.str();
}

Field Failed(const std::string& label, int status, const std::string& cause) {
  return {label, {"", status, cause}};
}

Detection FullDetection() {
  Detection detection;
  detection.generation.value = SMM_SECOND_GENERATION;
  detection.status.value.platformId = 253;
  detection.status.value.psuSlotCount = 9;
  detection.nodeCount.value = 12;
  return detection;
}

TEST(Report, IdentityIsShownLineByLine) {
  Identity identity;
  identity.machineType.value = "M1X2";
  identity.serialNumber.value = "J1 23";
  EXPECT_EQ(Printed(IdentityFields(identity)),
            "  machine type   M1X2\n"
            "  serial number  J1 23\n");
}

TEST(Report, DetectionIsShownLineByLine) {
  EXPECT_EQ(Printed(DetectionFields(FullDetection())),
            "  generation     second\n"
            "  platform id    253 (0xFD)\n"
            "  PSU slots      9\n"
            "  nodes          12\n");
}

TEST(Report, FirstGenerationIsNamed) {
  Detection detection = FullDetection();
  detection.generation.value = SMM_FIRST_GENERATION;
  EXPECT_EQ(DetectionFields(detection).front().result.value, "first");
}

TEST(Report, UnknownGenerationIsShownByNumber) {
  Detection detection = FullDetection();
  detection.generation.value = static_cast<SMMIype>(7);
  EXPECT_EQ(DetectionFields(detection).front().result.value, "unknown (type 7)");
}

TEST(Report, EmptySerialNumberIsNamedEmpty) {
  EXPECT_EQ(IdentityFields(Identity{}).back().result.value, "(empty)");
}

TEST(Report, ControlBytesOfTheControllerAreEscaped) {
  Identity identity;
  identity.serialNumber.value = "\x1b[2J";
  EXPECT_EQ(IdentityFields(identity).back().result.value, "\\x1b[2J");
}

TEST(Report, FailedFieldIsShownAsNotRead) {
  EXPECT_EQ(Printed({Failed("nodes", 4, "")}), "  nodes          not read\n");
}

TEST(Report, SuccessLeavesNothingToExplain) {
  EXPECT_EQ(Failures(DetectionFields(FullDetection())), "");
}

struct StatusRow {
  int status;
  std::string meaning;
};

TEST(Report, FailureTellsStatusCauseAndNextStep) {
  const std::vector<StatusRow> table = {
      {kExceptionStatus, "the library gave up with an exception"},
      {StatusCode::ConnectionKindNotAdmitted, "the connection kind admits no IPMI exchange"},
      {StatusCode::NotConnected, "no IPMI connection could be opened"},
      {StatusCode::UnusableAnswer, "the SMM refused the request or gave too short an answer"},
      {StatusCode::NoUsableResult, "the SMM gave no usable answer"},
      {99, "the SMM gave no usable answer"},
  };
  for (const StatusRow& row : table) {
    EXPECT_THAT(Failures({Failed("nodes", row.status, "some cause")}),
                testing::StartsWith("smm-inventory: nodes not read: " + row.meaning +
                                    " (some cause); next: "));
  }
}

TEST(Report, FailureWithoutCauseHasNoBrackets) {
  EXPECT_THAT(Failures({Failed("nodes", 4, "")}),
              HasSubstr("the SMM gave no usable answer; next: "));
}

TEST(Report, LikeFailuresAreToldTogether) {
  const std::string text = Failures(
      {Failed("a", 2, "x"), Failed("b", 2, "x"), Failed("c", 3, "x"), Failed("d", 3, "y")});
  EXPECT_THAT(text, HasSubstr("smm-inventory: a, b not read: no IPMI connection"));
  EXPECT_THAT(text, HasSubstr("smm-inventory: c not read: "));
  EXPECT_THAT(text, HasSubstr("smm-inventory: d not read: "));
}

TEST(Report, ExitCodeTellsTheWorstThatHappened) {
  const Field good = Failed("a", StatusCode::Success, "");
  const Field bad = Failed("b", StatusCode::UnusableAnswer, "");
  const Field thrown = Failed("c", kExceptionStatus, "");
  EXPECT_EQ(ExitCodeOf({good, good}), 0);
  EXPECT_EQ(ExitCodeOf({good, bad, good}), 1);
  EXPECT_EQ(ExitCodeOf({thrown, good}), 3);
  EXPECT_EQ(ExitCodeOf({bad, thrown, bad}), 3);
}

}  // namespace
}  // namespace Tavrin
