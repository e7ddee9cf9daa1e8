#include "tools/smm-inventory/Failure.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tools/smm-inventory/Describe.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;

Query Asked(const std::string& name, int status, const std::string& cause) {
  return {"key", name, Query::Shape::OneField, status, cause, {{0, {Field()}}}, ""};
}

Query AskedOfNode(const std::string& name, std::size_t node, int status) {
  return {"key", name, Query::Shape::RecordOfNode, status, "", {{node, {}}}, ""};
}

std::string Failures(const std::vector<Query>& queries) {
  std::ostringstream out;
  PrintFailures(out, {{"section", queries}});
  return out.str();
}

TEST(Failure, SuccessLeavesNothingToExplain) {
  EXPECT_EQ(Failures({Asked("nodes", StatusCode::Success, "a warning")}), "");
}

struct StatusRow {
  int status;
  std::string name;
  std::string meaning;
};

const std::vector<StatusRow>& StatusRows() {
  static const std::vector<StatusRow> table = {
      {kExceptionStatus, "Exception", "the library gave up with an exception"},
      {StatusCode::ConnectionKindNotAdmitted, "ConnectionKindNotAdmitted",
       "the connection kind admits no IPMI exchange"},
      {StatusCode::NotConnected, "NotConnected", "no IPMI connection could be opened"},
      {StatusCode::UnusableAnswer, "UnusableAnswer",
       "the SMM refused the request or gave an answer of unfit length"},
      {StatusCode::NoUsableResult, "NoUsableResult", "the SMM gave no usable answer"},
  };
  return table;
}

TEST(Failure, LineTellsStatusCauseAndNextStep) {
  for (const StatusRow& row : StatusRows()) {
    EXPECT_THAT(Failures({Asked("nodes", row.status, "some cause")}),
                testing::StartsWith("smm-inventory: nodes not read: " + row.meaning +
                                    " (some cause); next: "));
  }
}

TEST(Failure, StatusHasItsNameAndItsReason) {
  for (const StatusRow& row : StatusRows()) {
    EXPECT_EQ(StatusName(row.status), row.name);
    EXPECT_EQ(FailureReason(row.status, "x"), row.meaning + " (x)");
    EXPECT_EQ(FailureReason(row.status, ""), row.meaning);
  }
  EXPECT_EQ(StatusName(StatusCode::Success), "Success");
}

TEST(Failure, LineWithoutCauseHasNoBrackets) {
  EXPECT_THAT(Failures({Asked("nodes", 4, "")}),
              HasSubstr("the SMM gave no usable answer; next: "));
}

TEST(Failure, LikeFailuresAreToldTogether) {
  const std::string text =
      Failures({Asked("a", 2, "x"), Asked("b", 2, "x"), Asked("c", 3, "x"), Asked("d", 3, "y")});
  EXPECT_THAT(text, HasSubstr("smm-inventory: a, b not read: no IPMI connection"));
  EXPECT_THAT(text, HasSubstr("smm-inventory: c not read: "));
  EXPECT_THAT(text, HasSubstr("smm-inventory: d not read: "));
}

TEST(Failure, NodesAreToldByNumber) {
  EXPECT_THAT(Failures({AskedOfNode("node status", 2, 3), AskedOfNode("node status", 3, 0),
                        AskedOfNode("node status", 4, 3), AskedOfNode("node power", 4, 3)}),
              HasSubstr("smm-inventory: node status (2, 4), node power (4) not read: "));
}

TEST(Failure, ExitCodeTellsWhetherAQueryFailed) {
  const Section good = {"", {Asked("a", StatusCode::Success, "")}};
  const Section bad = {
      "",
      {Asked("a", StatusCode::Success, ""), Asked("b", StatusCode::NotConnected, ""),
       Asked("c", StatusCode::Success, "")}};
  const Section thrown = {"", {Asked("c", kExceptionStatus, "")}};
  EXPECT_EQ(ExitCodeOf({}), 0);
  EXPECT_EQ(ExitCodeOf({good, good}), 0);
  EXPECT_EQ(ExitCodeOf({good, bad, good}), 1);
  EXPECT_EQ(ExitCodeOf({thrown, good}), 1);
}

}  // namespace
}  // namespace Tavrin
