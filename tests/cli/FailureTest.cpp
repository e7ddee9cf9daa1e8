#include "tools/smm-inventory/Failure.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tools/smm-inventory/QueryResult.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;

Query Asked(const std::string& name, int status, const std::string& words) {
  return {"key", name, Query::Shape::OneField, status, {words, {}, 0, ""}, {{0, {Field()}}}, ""};
}

Query AskedOfNode(const std::string& name, std::size_t node, int status) {
  return {"key", name, Query::Shape::RecordOfNode, status, {}, {{node, {}}}, ""};
}

std::string Failures(const std::vector<Query>& queries) {
  std::ostringstream out;
  PrintFailures(out, {{"section", queries}});
  return out.str();
}

TEST(Failure, SuccessLeavesNothingToExplain) {
  EXPECT_EQ(Failures({Asked("nodes", StatusCode::Success, "a warning")}), "");
}

TEST(Failure, LineTellsReasonAndNextStep) {
  EXPECT_EQ(Failures({Asked("nodes", StatusCode::NoUsableResult, "x")}),
            "smm-inventory: nodes not read: the SMM gave no usable answer (x); next: run again; if "
            "it stays so, run with -vvv to see the answer\n");
}

TEST(Failure, RunWithoutAnyQueryIsOneLine) {
  std::ostringstream out;
  PrintNothingRead(out, "smm1:623", StatusCode::NotConnected,
                   {"no answer", Standalone::FailureCause::Unreachable, 0, ""});
  EXPECT_EQ(out.str(),
            "smm-inventory: nothing read from smm1:623: no IPMI connection could be opened (no "
            "answer); next: check host, port and this machine's network\n");
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
