#include <gmock/gmock.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "report/JsonFormat.h"
#include "tests/report/ExampleReading.h"
#include "tests/report/SchemaErrors.h"

namespace Tavrin {
namespace {

using nlohmann::json;
using testing::HasSubstr;

json ParsedDocument(const Reading& reading) {
  return json::parse(JsonFormat().document({reading, 0, "", ""}, {"0.1.0"}));
}

struct BadDocument {
  std::string path;  ///< Of what is changed.
  std::string value;
  std::string complaint;
};

void ExpectComplaints(const json& good, const std::vector<BadDocument>& table) {
  ASSERT_EQ(SchemaErrors({good.dump()}).front(), "");
  std::vector<std::string> bad;
  for (const BadDocument& row : table) {
    json changed = good;
    changed[json::json_pointer(row.path)] = json::parse(row.value);
    bad.push_back(changed.dump());
  }
  const std::vector<std::string> errors = SchemaErrors(bad);
  for (std::size_t index = 0; index < table.size(); ++index) {
    EXPECT_THAT(errors[index], HasSubstr(table[index].complaint)) << table[index].path;
  }
}

TEST(JsonSchema, DocumentThatDepartsFromItIsToldApart) {
  const std::vector<BadDocument> table = {
      {"/schemaVersion", "1", "schemaVersion"},
      {"/toolVersion", "\"\"", "toolVersion"},
      {"/readAt", "\"2026-11-21 18:24:05\"", "readAt"},
      {"/durationMs", "-1", "durationMs"},
      {"/surplus", "1", "surplus"},
      {"/failure", R"({"status": 2, "statusName": "NotConnected", "reason": "x"})", "queries/"},
      {"/queries/surplus", "1", "surplus"},
      {"/queries/nodeCount", "null", "queries/nodeCount"},
      {"/queries/nodeCount", R"({"status": 2})", "queries/nodeCount: 'statusName'"},
      {"/queries/nodeCount/value", "\"12\"", "queries/nodeCount"},
      {"/queries/nodeCount/surplus", "1", "surplus"},
      {"/queries/nodeCount/status", "3", "queries/nodeCount"},
      {"/queries/nodeCount/statusName", "\"NotConnected\"", "queries/nodeCount"},
      {"/queries/nodeCount/durationMs", "1.5", "queries/nodeCount/durationMs"},
      {"/queries/generation/value", "\"third\"", "queries/generation/value"},
      {"/queries/serialNumber/value", "null", "queries/serialNumber"},
      {"/queries/serialNumber/value", "12", "queries/serialNumber"},
      {"/queries/serialNumber/text", "\"\\u00e9\"", "queries/serialNumber"},
      {"/queries/chassisPower/fields/minPower", R"({"value": 1})", "minPower"},
      {"/queries/chassisPower/fields/minPower/value", "1.5", "minPower"},
      {"/queries/chassisPower/fields/minPower/unit", "\"W\"", "minPower"},
      {"/queries/powerCaps/fields/protectiveCap/reason", "\"\"", "protectiveCap"},
      {"/queries/chassisPower/fields/surplus", R"({"value": 1, "text": "1"})", "surplus"},
      {"/queries/nodeStatus/0/node", "0", "nodeStatus/0/node"},
      {"/queries/nodeStatus/0/fields/powerState/value", "\"Power ON\"", "powerState/value"},
      {"/queries/nodeStatus/0/fields/width/value", "3", "width/value"},
      {"/queries/psuFans/slots/0/fields", "{}", "psuFans"},
      {"/queries/psuFans/slots/0/fields/status/value", "\"Normal\"", "status/value"},
      {"/queries/psuFans/slots/0/surplus", "1", "surplus"},
      {"/queries/psuStatus/slots/0/fields/epow/value", "\"trigger\"", "epow/value"},
  };
  ExpectComplaints(ParsedDocument(ExampleReading()), table);
}

TEST(JsonSchema, EveryMemberOfTheWholeIsRequired) {
  const std::vector<std::string> members = {"schemaVersion", "toolVersion", "address",
                                            "readAt",        "durationMs",  "queries"};
  std::vector<std::string> bad;
  for (const std::string& member : members) {
    json document = ParsedDocument(ExampleReading());
    document.erase(member);
    bad.push_back(document.dump());
  }
  const std::vector<std::string> errors = SchemaErrors(bad);
  for (std::size_t index = 0; index < members.size(); ++index) {
    EXPECT_THAT(errors[index], HasSubstr('\'' + members[index] + "' is a required property"));
  }
}

TEST(JsonSchema, FailedDocumentThatDepartsFromItIsToldApart) {
  const std::vector<BadDocument> table = {
      {"/failure", "{}", "failure"},
      {"/failure/status", "0", "failure"},
      {"/failure/statusName", "\"NoUsableResult\"", "failure"},
      {"/failure/reason", "\"\"", "reason"},
      {"/failure/surplus", "1", "surplus"},
      {"/queries/nodeCount",
       R"({"status": 0, "statusName": "Success", "durationMs": 5, "value": 4, "text": "4"})",
       "queries/nodeCount"},
      {"/queries/nodeCount", "{}", "queries/nodeCount"},
      {"/queries/nodeCount", R"({"status": 2, "value": 4})", "queries/nodeCount"},
      {"/queries/nodePower", R"([{"status": 2}])", "queries/nodePower/0"},
      {"/queries/nodePower", R"([{"node": 1, "status": 0}])", "queries/nodePower/0/status"},
  };
  ExpectComplaints(ParsedDocument(FailedReading()), table);
  json document = ParsedDocument(FailedReading());
  document.erase("failure");
  EXPECT_THAT(SchemaErrors({document.dump()}).front(), HasSubstr("generation"));
}

}  // namespace
}  // namespace Tavrin
