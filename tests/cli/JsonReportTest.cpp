#include "tools/smm-inventory/JsonReport.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/Results.h"
#include "tests/cli/Schema.h"
#include "tools/smm-inventory/Describe.h"

namespace Tavrin {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kRefusal =
    "the SMM refused the request or gave an answer of unfit length (its answer is empty)";

std::string Document(const std::vector<Section>& sections) {
  std::ostringstream out;
  PrintJson(out, "smm1:623", sections);
  return out.str();
}

/// What the document says of the query of that key, after it was found to keep to the schema.
json QueryOf(const Section& section, const std::string& key) {
  const std::string document = Document({DescribeDetection(FullDetection()), section});
  EXPECT_EQ(SchemaErrors(document), "");
  return json::parse(document).at("queries").at(key);
}

json Read(const json& value, const std::string& text) { return {{"value", value}, {"text", text}}; }

json NotAvailable() {
  return {{"value", nullptr}, {"text", "N/A"}, {"reason", "not reported by the SMM"}};
}

json Unread(const std::string& reason) { return {{"value", nullptr}, {"reason", reason}}; }

json Succeeded(const std::string& part, const json& value) {
  return {{"status", 0}, {"statusName", "Success"}, {part, value}};
}

TEST(JsonReport, DocumentHasVersionAddressAndDetection) {
  const std::string document = Document({DescribeDetection(FullDetection())});
  EXPECT_EQ(SchemaErrors(document), "");
  EXPECT_EQ(json::parse(document), json::parse(R"({
    "schemaVersion": 1,
    "address": "smm1:623",
    "queries": {
      "generation": {"status": 0, "statusName": "Success", "value": "second", "text": "second"},
      "platformId": {"status": 0, "statusName": "Success", "value": 253, "text": "253"},
      "psuSlotCount": {"status": 0, "statusName": "Success", "value": 9, "text": "9"},
      "nodeCount": {"status": 0, "statusName": "Success", "value": 12, "text": "12"}
    }
  })"));
}

TEST(JsonReport, MembersComeInTheOrderOfReading) {
  EXPECT_THAT(Document({DescribeDetection(FullDetection())}),
              testing::StartsWith("{\n  \"schemaVersion\": 1,\n  \"address\": \"smm1:623\",\n"
                                  "  \"queries\": {\n    \"generation\": {\n      \"status\": 0,\n"
                                  "      \"statusName\": \"Success\",\n"));
}

TEST(JsonReport, TextOfDigitsStaysAText) {
  const json query = QueryOf(DescribeIdentity(FullIdentity()), "machineType");
  EXPECT_EQ(query.at("value"), "1234");
  EXPECT_EQ(query.at("text"), "1234");
}

TEST(JsonReport, EmptyTextIsAValue) {
  const json query = QueryOf(DescribeIdentity(FullIdentity()), "name");
  EXPECT_EQ(query.at("value"), "");
}

TEST(JsonReport, RefusedFieldHasStatusAndReasonOnce) {
  Identity identity = FullIdentity();
  identity.serialNumber = Refused<std::string>();
  EXPECT_EQ(QueryOf(DescribeIdentity(identity), "serialNumber"),
            (json{{"status", 3},
                  {"statusName", "UnusableAnswer"},
                  {"reason", kRefusal},
                  {"value", nullptr}}));
}

TEST(JsonReport, ExceptionIsAStatusOfItsOwn) {
  Identity identity = FullIdentity();
  identity.name = {"", kExceptionStatus, {"out of order", {}, 0, ""}};
  const json query = QueryOf(DescribeIdentity(identity), "name");
  EXPECT_EQ(query.at("status"), -1);
  EXPECT_EQ(query.at("statusName"), "Exception");
}

TEST(JsonReport, ChassisPowerIsThreeNumbers) {
  EXPECT_EQ(
      QueryOf(DescribeChassisPower(Good(ChassisPowerCon{"0", "350", "65535"})), "chassisPower"),
      Succeeded("fields", {{"minPower", Read(0, "0")},
                           {"avgPower", Read(350, "350")},
                           {"maxPower", Read(65535, "65535")}}));
}

TEST(JsonReport, AbsentCapIsNullWithAReason) {
  EXPECT_EQ(
      QueryOf(DescribePowerCaps(Good(ChassisPowerCap{"1", "2", "N/A", "4", "5"})), "powerCaps"),
      Succeeded("fields", {{"minCap", Read(1, "1")},
                           {"maxCap", Read(2, "2")},
                           {"protectiveCap", NotAvailable()},
                           {"userCap", Read(4, "4")},
                           {"thermalCap", Read(5, "5")}}));
}

TEST(JsonReport, RefusedRecordHasItsFieldsWithoutValues) {
  const json query = QueryOf(DescribeChassisPower(Refused<ChassisPowerCon>()), "chassisPower");
  EXPECT_EQ(query.at("status"), 3);
  EXPECT_EQ(query.at("reason"), kRefusal);
  EXPECT_EQ(query.at("fields").at("avgPower"), Unread(kRefusal));
}

TEST(JsonReport, EachNodeIsAQueryWithItsNumber) {
  const json nodes = QueryOf(
      DescribeNodeStatus({Good(NodeStatus{"Power ON", "Half", "1", 0}), Refused<NodeStatus>(),
                          Good(NodeStatus{"Fault", "3", "N/A", 255})}),
      "nodeStatus");
  ASSERT_EQ(nodes.size(), 3U);
  EXPECT_EQ(nodes[0].at("node"), 1);
  EXPECT_EQ(nodes[0].at("fields"), (json{{"powerState", Read("Power ON", "Power ON")},
                                         {"width", Read("Half", "Half")},
                                         {"height", Read(1, "1")},
                                         {"permissionState", Read(0, "0")}}));
  EXPECT_EQ(nodes[1].at("node"), 2);
  EXPECT_EQ(nodes[1].at("statusName"), "UnusableAnswer");
  EXPECT_EQ(nodes[2].at("fields").at("width"), Read(3, "3"));
  EXPECT_EQ(nodes[2].at("fields").at("height"), NotAvailable());
  EXPECT_EQ(nodes[2].at("fields").at("permissionState"), Read(255, "255"));
}

TEST(JsonReport, NodePowerIsThreeNumbersANode) {
  const json nodes =
      QueryOf(DescribeNodePower({Good(ChassisPowerCon{"120", "N/A", "410"})}), "nodePower");
  EXPECT_EQ(nodes.at(0).at("fields"), (json{{"minPower", Read(120, "120")},
                                            {"avgPower", NotAvailable()},
                                            {"maxPower", Read(410, "410")}}));
}

TEST(JsonReport, MissingFanIsNullWithItsEmptyText) {
  const json query = QueryOf(DescribePsuFans(Good(FansOfBothGenerations()), 2), "psuFans");
  const json absent = {
      {"value", nullptr}, {"text", ""}, {"reason", "a first-generation SMM reports one fan a PSU"}};
  EXPECT_EQ(query.at("slots").at(0), (json{{"slot", 1},
                                           {"fields",
                                            {{"name", Read("PSU1", "PSU1")},
                                             {"speedA", Read(1000, "1000")},
                                             {"patA", NotAvailable()},
                                             {"speedB", absent},
                                             {"patB", absent},
                                             {"status", Read("Abnormal", "Abnormal")}}}}));
  EXPECT_EQ(query.at("slots").at(1).at("fields").at("speedB"), NotAvailable());
  EXPECT_EQ(query.at("slots").at(1).at("fields").at("patB"), Read(7, "7"));
}

TEST(JsonReport, SlotWithoutARecordHasFieldsWithAReason) {
  const json query = QueryOf(DescribePsuFans(Good(FansOfBothGenerations()), 3), "psuFans");
  EXPECT_EQ(query.at("slots").at(2).at("fields").at("name"),
            Unread("the SMM gave no usable answer for this slot"));
}

TEST(JsonReport, SlotsReadBeforeAFailureStayBesideIt) {
  const json query = QueryOf(DescribePsuFans(Refused(FansOfBothGenerations()), 3), "psuFans");
  EXPECT_EQ(query.at("status"), 3);
  EXPECT_EQ(query.at("slots").at(1).at("fields").at("speedA"), Read(10000, "10000"));
  EXPECT_EQ(query.at("slots").at(2).at("fields").at("speedA"), Unread(kRefusal));
}

TEST(JsonReport, RawBytesAreEscapedAndGivenBeside) {
  const json query = QueryOf(
      DescribePsuFirmware(Good<std::vector<PSUFwInfo>>({FirmwareOfRawBytes()}), 1), "psuFirmware");
  const json fields = query.at("slots").at(0).at("fields");
  EXPECT_EQ(fields.at("identifier"),
            (json{{"value",
                   "PSU\\xff\\x00\\x1b"
                   "Da.01"},
                  {"text",
                   "PSU\\xff\\x00\\x1b"
                   "Da.01"},
                  {"bytes", {'P', 'S', 'U', 0xFF, 0, 0x1B, 'D', 'a', '.', '0', '1'}}}));
  EXPECT_EQ(fields.at("version"), Read("1.0a", "1.0a"));
  EXPECT_EQ(fields.at("description"), Read("Power Supply 1", "Power Supply 1"));
}

TEST(JsonReport, EveryByteKeepsTheDocumentAscii) {
  Identity identity = FullIdentity();
  identity.serialNumber.value.clear();
  for (int byte = 0; byte < 256; ++byte) {
    identity.serialNumber.value.push_back(static_cast<char>(byte));
  }
  const json bytes = QueryOf(DescribeIdentity(identity), "serialNumber").at("bytes");
  ASSERT_EQ(bytes.size(), 256U);
  EXPECT_EQ(bytes[255], 255);
  for (const char c : Document({DescribeIdentity(identity)})) {
    EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << static_cast<int>(c);
  }
}

TEST(JsonReport, PrintableTextIsGivenAsItIs) {
  Identity identity = FullIdentity();
  identity.serialNumber.value.clear();
  for (char c = ' '; c <= '~'; ++c) {
    identity.serialNumber.value.push_back(c);
  }
  const json query = QueryOf(DescribeIdentity(identity), "serialNumber");
  EXPECT_EQ(query.at("value"), identity.serialNumber.value);
  EXPECT_EQ(query.at("text"), identity.serialNumber.value);
  EXPECT_EQ(query.count("bytes"), 0U);
}

TEST(JsonReport, PsuFlagsAreTexts) {
  EXPECT_EQ(
      QueryOf(DescribePsuStatus(Good<std::vector<PSUStatus>>(
                  {{"trigger", "not trigger", "present", "power good"}})),
              "psuStatus"),
      Succeeded("slots", json::array({{{"slot", 1},
                                       {"fields",
                                        {{"epow", Read("trigger", "trigger")},
                                         {"throttle", Read("not trigger", "not trigger")},
                                         {"present", Read("present", "present")},
                                         {"powerGood", Read("power good", "power good")}}}}})));
}

TEST(JsonReport, SlotsBeyondTheFlagsHaveNone) {
  const auto query = [](std::size_t slotCount) {
    const PSUStatus flags{"trigger", "trigger", "not present", "not power good"};
    return QueryOf(DescribePsuStatus(Good(std::vector<PSUStatus>(slotCount, flags))), "psuStatus");
  };
  const json untold = {{"value", nullptr},
                       {"text", ""},
                       {"reason", "the SMM's answer holds the flags of 8 PSUs only"}};
  EXPECT_THAT(query(9).at("note"), HasSubstr("flags of 8 PSUs only"));
  EXPECT_EQ(
      query(9).at("slots").at(8),
      (json{
          {"slot", 9},
          {"fields",
           {{"epow", untold}, {"throttle", untold}, {"present", untold}, {"powerGood", untold}}}}));
  EXPECT_EQ(query(9).at("slots").at(7).at("fields").at("present").at("value"), "not present");
  EXPECT_EQ(query(8).count("note"), 0U);
}

TEST(JsonReport, SlotsThatWereNotCountedAreAnEmptyList) {
  const json query = QueryOf(
      DescribePsuStatus({{}, StatusCode::NotConnected, {"no answer", {}, 0, ""}}), "psuStatus");
  EXPECT_EQ(query.at("slots"), json::array());
  EXPECT_EQ(query.at("reason"), "no IPMI connection could be opened (no answer)");
}

TEST(JsonReport, SelectionTellsWhatWasSent) {
  EXPECT_EQ(
      QueryOf(DescribePsuSelection(Good(PsuSelection{7, true, 3, "highest"})), "psuSelection"),
      Succeeded("fields", {{"asked", Read(7, "7")},
                           {"sent", Read(3, "3")},
                           {"remark", Read("highest", "highest")},
                           {"acknowledgement", Read("received", "received")}}));
}

TEST(JsonReport, SelectionWithoutNumberHasNullForIt) {
  const json query =
      QueryOf(DescribePsuSelection(Refused(PsuSelection{7, true, {}, "left out"})), "psuSelection");
  EXPECT_EQ(query.at("status"), 3);
  EXPECT_EQ(query.at("fields").at("sent"),
            (json{{"value", nullptr}, {"text", "none"}, {"reason", "left out"}}));
  EXPECT_EQ(query.at("fields").at("acknowledgement"), Read("missing", "missing"));
}

TEST(JsonReport, SelectionThatWasNotSentHasNullForIt) {
  const json query =
      QueryOf(DescribePsuSelection(Refused(PsuSelection{7, false, {}, "nothing was sent"})),
              "psuSelection");
  EXPECT_EQ(query.at("fields").at("sent"),
            (json{{"value", nullptr}, {"text", ""}, {"reason", "nothing was sent"}}));
}

json FailedDocument() {
  std::ostringstream out;
  PrintJsonFailure(out, "smm1:623", StatusCode::NotConnected,
                   {"no answer", Standalone::FailureCause::Silence, 0, ""});
  EXPECT_EQ(SchemaErrors(out.str()), "");
  return json::parse(out.str());
}

TEST(JsonReport, EnclosureThatCouldNotBeAskedHasOneFailureAndNoQueries) {
  EXPECT_EQ(FailedDocument(), json::parse(R"json({
    "schemaVersion": 1,
    "address": "smm1:623",
    "failure": {"status": 2, "statusName": "NotConnected",
                "reason": "no IPMI connection could be opened (no answer)"},
    "queries": {}
})json"));
}

struct BadDocument {
  std::string path;  ///< Of what is changed.
  json value;
  std::string complaint;
};

void ExpectComplaint(json document, const BadDocument& row) {
  document[json::json_pointer(row.path)] = row.value;
  EXPECT_THAT(SchemaErrors(document.dump()), HasSubstr(row.complaint)) << row.path;
}

TEST(JsonSchema, DocumentThatDepartsFromItIsToldApart) {
  const json good =
      json::parse(Document({DescribeDetection(FullDetection()), DescribeIdentity(FullIdentity()),
                            DescribeChassisPower(Good(ChassisPowerCon{"1", "N/A", "3"})),
                            DescribeNodeStatus({Good(NodeStatus{"Power ON", "Half", "1", 0})}),
                            DescribePsuFans(Good(FansOfBothGenerations()), 2)}));
  ASSERT_EQ(SchemaErrors(good.dump()), "");
  const std::vector<BadDocument> table = {
      {"/schemaVersion", 2, "schemaVersion"},
      {"/surplus", 1, "surplus"},
      {"/queries/surplus", 1, "surplus"},
      {"/queries/nodeCount", nullptr, "nodeCount"},
      {"/queries/nodeCount/value", "12", "nodeCount"},
      {"/queries/nodeCount/surplus", 1, "nodeCount"},
      {"/queries/nodeCount/status", 3, "nodeCount"},
      {"/queries/nodeCount/statusName", "NotConnected", "nodeCount"},
      {"/queries/serialNumber/value", nullptr, "serialNumber"},
      {"/queries/serialNumber/value", 12, "serialNumber"},
      {"/queries/serialNumber/text", "\xc3\xa9", "serialNumber"},
      {"/queries/chassisPower/fields/minPower", {{"value", 1}}, "minPower"},
      {"/queries/chassisPower/fields/minPower/value", 1.5, "minPower"},
      {"/queries/chassisPower/fields/minPower/unit", "W", "minPower"},
      {"/queries/chassisPower/fields/avgPower/reason", "", "avgPower"},
      {"/queries/chassisPower/fields/surplus", Read(1, "1"), "surplus"},
      {"/queries/nodeStatus/0/node", 0, "nodeStatus/0/node"},
      {"/queries/psuFans/slots/0/fields", json::object(), "psuFans"},
      {"/queries/psuFans/slots/0/surplus", 1, "surplus"},
  };
  for (const BadDocument& row : table) {
    ExpectComplaint(good, row);
  }
}

TEST(JsonSchema, FailedDocumentThatDepartsFromItIsToldApart) {
  const json status = {{"status", 0}, {"statusName", "Success"}, {"value", 4}, {"text", "4"}};
  const std::vector<BadDocument> table = {
      {"/failure", json::object(), "failure"},
      {"/failure/status", 0, "failure"},
      {"/failure/statusName", "NoUsableResult", "failure"},
      {"/failure/reason", "", "reason"},
      {"/failure/surplus", 1, "surplus"},
      {"/queries/nodeCount", status, "queries"},
  };
  for (const BadDocument& row : table) {
    ExpectComplaint(FailedDocument(), row);
  }
  json changed = FailedDocument();
  changed.erase("failure");
  EXPECT_THAT(SchemaErrors(changed.dump()), HasSubstr("generation"));
}

}  // namespace
}  // namespace Tavrin
