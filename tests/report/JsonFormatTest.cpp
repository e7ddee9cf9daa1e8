#include "report/JsonFormat.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"
#include "tests/report/SchemaErrors.h"

namespace Tavrin {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

std::string Document(const Reading& reading) {
  return JsonFormat().document({reading, 0, "", ""}, {"0.1.0"});
}

/// JSON without blanks and with sorted members, so that like documents are like texts.
std::string Normal(const std::string& text) { return json::parse(text).dump(); }

/// What stands at `pointer` in the document ("" is the whole), as Normal() has it; empty when
/// nothing stands there.
std::string At(const std::string& document, const std::string& pointer) {
  const json whole = json::parse(document);
  const json::json_pointer place(pointer);
  return whole.contains(place) ? whole.at(place).dump() : "";
}

/// The document without what breaks its lines.
std::string OneLine(const Reading& reading) {
  std::string text = Document(reading);
  std::size_t lineBreak = 0;
  while ((lineBreak = text.find('\n', lineBreak)) != std::string::npos) {
    text.erase(lineBreak, text.find_first_not_of(' ', lineBreak + 1) - lineBreak);
  }
  return text;
}

/// Holds every document that a test looked into against the schema, all at once at the end.
class JsonFormatTest : public testing::Test {
 protected:
  static void TearDownTestSuite() {
    const std::vector<std::string> errors = SchemaErrors(Documents());
    for (std::size_t index = 0; index < errors.size(); ++index) {
      EXPECT_EQ(errors[index], "") << Documents()[index];
    }
  }

  static std::string ValidAt(const Reading& reading, const std::string& pointer) {
    Documents().push_back(Document(reading));
    return At(Documents().back(), pointer);
  }
  static std::string ValidAtWithHealth(const Reading& reading, const std::string& pointer,
                                       const std::vector<IgnoredFinding>& ignored = {}) {
    Documents().push_back(JsonFormat().document({reading, 0, "", ""}, {"0.1.0", ignored, true}));
    return At(Documents().back(), pointer);
  }

 private:
  static std::vector<std::string>& Documents() {
    static std::vector<std::string> documents;
    return documents;
  }
};

TEST_F(JsonFormatTest, SummarySaysThatItIsForPrograms) {
  EXPECT_EQ(JsonFormat().summary, "One JSON document, for programs");
}

TEST_F(JsonFormatTest, DocumentHasVersionsAddressTimesAndDetection) {
  Reading reading;
  reading.address = "smm1:623";
  reading.readAt = ExampleReading().readAt;
  reading.duration = ExampleReading().duration;
  reading.detection = ExampleReading().detection;
  EXPECT_EQ(ValidAt(reading, ""), Normal(R"({
    "schemaVersion": 2,
    "toolVersion": "0.1.0",
    "address": "smm1:623",
    "readAt": "2026-11-21T18:24:05.678Z",
    "durationMs": 21034,
    "queries": {
      "generation": {"status": 0, "statusName": "Success", "durationMs": 5,
                     "value": "second", "text": "second"},
      "platformId": {"status": 0, "statusName": "Success", "durationMs": 5,
                     "value": 254, "text": "254"},
      "psuSlotCount": {"status": 0, "statusName": "Success", "durationMs": 5,
                       "value": 2, "text": "2"},
      "nodeCount": {"status": 0, "statusName": "Success", "durationMs": 5,
                    "value": 4, "text": "4"}
    }
  })"));
}

TEST_F(JsonFormatTest, MembersComeInTheOrderOfReading) {
  EXPECT_THAT(Document(ExampleReading()),
              StartsWith("{\n  \"schemaVersion\": 2,\n  \"toolVersion\": \"0.1.0\",\n"
                         "  \"address\": \"smm1:623\",\n"
                         "  \"readAt\": \"2026-11-21T18:24:05.678Z\",\n"
                         "  \"durationMs\": 21034,\n  \"queries\": {\n    \"generation\": {\n"
                         "      \"status\": 0,\n      \"statusName\": \"Success\",\n"
                         "      \"durationMs\": 5,\n"));
}

TEST_F(JsonFormatTest, MembersOfAFailedPassComeInThatOrderToo) {
  EXPECT_THAT(
      OneLine(FailedReading()),
      HasSubstr(R"json("durationMs": 21034,"failure": {"status": 2,)json"
                R"json("statusName": "NotConnected","reason": "no IPMI connection could )json"
                R"json(be opened (no answer)"},"queries": {})json"));
}

TEST_F(JsonFormatTest, MembersOfAQueryComeInOneOrderInAllShapes) {
  Reading reading = ExampleReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  reading.psuStatus = ExampleFlags(9);
  const std::string document = OneLine(reading);
  EXPECT_THAT(document,
              HasSubstr(R"({"node": 2,"status": 3,"statusName": "UnusableAnswer",)"
                        R"("reason": ")" +
                        std::string(kRefusal) + R"(","durationMs": 6,"fields": {"powerState": {)"));
  EXPECT_THAT(document, HasSubstr(R"("durationMs": 5,"note": "The SMM's answer )"));
  EXPECT_THAT(document, HasSubstr(R"(not told.","slots": [{"slot": 1,"fields": {"epow": {)"));
}

TEST_F(JsonFormatTest, MembersOfAFieldComeInOneOrder) {
  Reading reading = ExampleReading();
  reading.chassisPower = Good(DecodePower({"\x1b", "", ""}));
  const std::string document = OneLine(reading);
  EXPECT_THAT(document, HasSubstr(R"("value": "PSU\\xff\\x00\\x1bDa.01",)"
                                  R"("text": "PSU\\xff\\x00\\x1bDa.01","bytes": [80,83,)"));
  EXPECT_THAT(document, HasSubstr(R"("minPower": {"value": null,"text": "\\x1b","bytes": [27],)"
                                  R"("reason": "not reported by the SMM"})"));
}

TEST_F(JsonFormatTest, DocumentEndsWithItsLine) {
  EXPECT_THAT(Document(ExampleReading()), testing::EndsWith("\n}\n"));
}

TEST_F(JsonFormatTest, UnknownGenerationIsAWordWithItsTypeInTheText) {
  Reading reading = ExampleReading();
  reading.detection->generation.value.value = static_cast<SMMIype>(7);
  EXPECT_EQ(ValidAt(reading, "/queries/generation"),
            Normal(R"json({"status": 0, "statusName": "Success", "durationMs": 5,
                       "value": "unknown", "text": "unknown (type 7)"})json"));
}

TEST_F(JsonFormatTest, TextOfDigitsStaysAText) {
  EXPECT_EQ(ValidAt(ExampleReading(), "/queries/machineType"),
            Normal(R"({"status": 0, "statusName": "Success", "durationMs": 5,
                       "value": "1234", "text": "1234"})"));
}

TEST_F(JsonFormatTest, EmptyTextIsAValue) {
  EXPECT_EQ(ValidAt(ExampleReading(), "/queries/name/value"), "\"\"");
}

TEST_F(JsonFormatTest, RefusedFieldHasStatusAndReasonOnce) {
  Reading reading = ExampleReading();
  reading.identity->serialNumber = Refused<Text>();
  EXPECT_EQ(ValidAt(reading, "/queries/serialNumber"),
            Normal(R"({"status": 3, "statusName": "UnusableAnswer", "durationMs": 6, "value": null,
                       "reason": ")" +
                   std::string(kRefusal) + "\"}"));
}

TEST_F(JsonFormatTest, ExceptionIsAStatusOfItsOwn) {
  Reading reading = ExampleReading();
  reading.identity->name = Refused<Text>();
  reading.identity->name.status = kExceptionStatus;
  EXPECT_EQ(ValidAt(reading, "/queries/name/status"), "-1");
  EXPECT_EQ(ValidAt(reading, "/queries/name/statusName"), "\"Exception\"");
}

TEST_F(JsonFormatTest, ChassisPowerIsThreeNumbers) {
  EXPECT_EQ(ValidAt(ExampleReading(), "/queries/chassisPower"),
            Normal(R"({"status": 0, "statusName": "Success", "durationMs": 5, "fields": {
                        "minPower": {"value": 0, "text": "0"},
                        "avgPower": {"value": 350, "text": "350"},
                        "maxPower": {"value": 65535, "text": "65535"}}})"));
}

TEST_F(JsonFormatTest, AbsentCapIsNullWithAReason) {
  EXPECT_EQ(ValidAt(ExampleReading(), "/queries/powerCaps/fields"), Normal(R"({
    "minCap": {"value": 1, "text": "1"},
    "maxCap": {"value": 2, "text": "2"},
    "protectiveCap": {"value": null, "text": "N/A", "reason": "not reported by the SMM"},
    "userCap": {"value": 4, "text": "4"},
    "thermalCap": {"value": 5, "text": "5"}})"));
}

TEST_F(JsonFormatTest, RefusedRecordHasItsFieldsWithoutValues) {
  Reading reading = ExampleReading();
  reading.chassisPower = Refused<PowerReadings>();
  EXPECT_EQ(ValidAt(reading, "/queries/chassisPower/reason"), '"' + std::string(kRefusal) + '"');
  EXPECT_EQ(ValidAt(reading, "/queries/chassisPower/fields/avgPower"),
            Normal(R"({"value": null, "reason": ")" + std::string(kRefusal) + "\"}"));
}

TEST_F(JsonFormatTest, EachNodeIsAQueryWithItsNumberAndItsStates) {
  Reading reading = ExampleReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  const std::string nodes = ValidAt(reading, "/queries/nodeStatus");
  EXPECT_EQ(At(nodes, "/0"),
            Normal(R"({"node": 1, "status": 0, "statusName": "Success", "durationMs": 5, "fields": {
                        "powerState": {"value": "on", "text": "Power ON"},
                        "width": {"value": "half", "text": "Half"},
                        "height": {"value": 1, "text": "1"},
                        "permissionState": {"value": 0, "text": "0"}}})"));
  EXPECT_EQ(At(nodes, "/1/node"), "2");
  EXPECT_EQ(At(nodes, "/1/statusName"), "\"UnusableAnswer\"");
  EXPECT_EQ(At(nodes, "/2/fields"), Normal(R"({
    "powerState": {"value": "noPermission", "text": "No Permission"},
    "width": {"value": "other", "text": "3"},
    "height": {"value": null, "text": "N/A", "reason": "not reported by the SMM"},
    "permissionState": {"value": 255, "text": "255"}})"));
  EXPECT_EQ(At(nodes, "/3/fields/width"),
            Normal(R"({"value": null, "text": "N/A", "reason": "not reported by the SMM"})"));
  EXPECT_EQ(At(nodes, "/4"), "");
}

TEST_F(JsonFormatTest, NodePowerIsThreeNumbersANode) {
  EXPECT_EQ(ValidAt(ExampleReading(), "/queries/nodePower/3"),
            Normal(R"({"node": 4, "status": 0, "statusName": "Success", "durationMs": 5, "fields": {
                "minPower": {"value": null, "text": "N/A", "reason": "not reported by the SMM"},
                "avgPower": {"value": null, "text": "N/A", "reason": "not reported by the SMM"},
                "maxPower": {"value": 410, "text": "410"}}})"));
}

TEST_F(JsonFormatTest, MissingFanIsNullWithItsEmptyText) {
  const std::string slots = ValidAt(ExampleReading(), "/queries/psuFans/slots");
  EXPECT_EQ(At(slots, "/0"), Normal(R"({"slot": 1, "fields": {
      "name": {"value": "PSU1", "text": "PSU1"},
      "speedA": {"value": 1000, "text": "1000"},
      "patA": {"value": null, "text": "N/A", "reason": "not reported by the SMM"},
      "speedB": {"value": null, "text": "", "reason": "a first-generation SMM reports one fan a PSU"},
      "patB": {"value": null, "text": "", "reason": "a first-generation SMM reports one fan a PSU"},
      "status": {"value": "abnormal", "text": "Abnormal"}}})"));
  EXPECT_EQ(At(slots, "/1/fields/patB"), Normal(R"({"value": 7, "text": "7"})"));
}

TEST_F(JsonFormatTest, SlotThatGaveNothingHasFieldsWithAReason) {
  Reading reading = ExampleReading();
  reading.psuFans = Good(DecodeFans({}, 2, Absence::SlotUnanswered));
  EXPECT_EQ(ValidAt(reading, "/queries/psuFans/slots/1/fields/speedA"),
            Normal(R"({"value": null, "reason": "the SMM gave no usable answer for this slot"})"));
}

TEST_F(JsonFormatTest, SlotsReadBeforeAFailureStayBesideIt) {
  Reading reading = ExampleReading();
  reading.psuFans = Refused(ExampleReading().psuFans->value);
  reading.psuFans->value.push_back({3, {}, {}, {}, {}, {}, {}});
  const std::string fans = ValidAt(reading, "/queries/psuFans");
  EXPECT_EQ(At(fans, "/status"), "3");
  EXPECT_EQ(At(fans, "/slots/1/fields/speedA/value"), "10000");
  EXPECT_EQ(At(fans, "/slots/2/slot"), "3");
  EXPECT_EQ(At(fans, "/slots/2/fields/speedA"),
            Normal(R"({"value": null, "reason": ")" + std::string(kRefusal) + "\"}"));
}

TEST_F(JsonFormatTest, RawBytesAreEscapedAndGivenBeside) {
  const std::string fields = ValidAt(ExampleReading(), "/queries/psuFirmware/slots/0/fields");
  EXPECT_EQ(At(fields, "/identifier"),
            Normal(R"({"value": "PSU\\xff\\x00\\x1bDa.01", "text": "PSU\\xff\\x00\\x1bDa.01",
                       "bytes": [80, 83, 85, 255, 0, 27, 68, 97, 46, 48, 49]})"));
  EXPECT_EQ(At(fields, "/version"), Normal(R"({"value": "1.0a", "text": "1.0a"})"));
}

TEST_F(JsonFormatTest, EveryByteIsGivenAsANumber) {
  std::string bytes;
  std::string numbers;
  for (int byte = 0; byte < 256; ++byte) {
    bytes.push_back(static_cast<char>(byte));
    numbers += (byte == 0 ? "[" : ",") + std::to_string(byte);
  }
  Reading reading = ExampleReading();
  reading.identity->serialNumber = Good(TextOf(bytes));
  EXPECT_EQ(ValidAt(reading, "/queries/serialNumber/bytes"), numbers + "]");
}

TEST_F(JsonFormatTest, PrintableTextIsGivenAsItIs) {
  std::string printable;
  for (char c = ' '; c <= '~'; ++c) {
    printable += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
  }
  Reading reading = ExampleReading();
  std::string text = printable;
  text.erase(text.find("\\\""), 1).erase(text.find("\\\\"), 1);
  reading.identity->serialNumber = Good(TextOf(text));
  EXPECT_EQ(ValidAt(reading, "/queries/serialNumber/value"), '"' + printable + '"');
  EXPECT_EQ(ValidAt(reading, "/queries/serialNumber/bytes"), "");
}

TEST_F(JsonFormatTest, BytesNextToThePrintableOnesAreNotPrintable) {
  Reading reading = ExampleReading();
  reading.identity->serialNumber = Good(TextOf("\x1f"));
  reading.identity->name = Good(TextOf("\x7f"));
  EXPECT_EQ(ValidAt(reading, "/queries/serialNumber/bytes"), "[31]");
  EXPECT_EQ(ValidAt(reading, "/queries/name/bytes"), "[127]");
}

TEST_F(JsonFormatTest, PsuFlagsAreBooleansWithTheControllersWords) {
  EXPECT_EQ(ValidAt(ExampleReading(), "/queries/psuStatus"),
            Normal(R"({"status": 0, "statusName": "Success", "durationMs": 5, "slots": [
      {"slot": 1, "fields": {"epow": {"value": true, "text": "trigger"},
                             "throttle": {"value": false, "text": "not trigger"},
                             "present": {"value": true, "text": "present"},
                             "powerGood": {"value": true, "text": "power good"}}},
      {"slot": 2, "fields": {"epow": {"value": false, "text": "not trigger"},
                             "throttle": {"value": true, "text": "trigger"},
                             "present": {"value": false, "text": "not present"},
                             "powerGood": {"value": false, "text": "not power good"}}}]})"));
}

TEST_F(JsonFormatTest, SlotsBeyondTheFlagsHaveNone) {
  Reading reading = ExampleReading();
  reading.psuStatus = ExampleFlags(8);
  EXPECT_EQ(ValidAt(reading, "/queries/psuStatus/note"), "");
  reading.psuStatus = ExampleFlags(9);
  const std::string status = ValidAt(reading, "/queries/psuStatus");
  EXPECT_THAT(At(status, "/note"), HasSubstr("flags of 8 PSUs only"));
  EXPECT_EQ(At(status, "/slots/8/slot"), "9");
  for (const char* const flag : {"epow", "throttle", "present", "powerGood"}) {
    EXPECT_EQ(At(status, std::string("/slots/8/fields/") + flag),
              Normal(R"({"value": null, "text": "",
                         "reason": "the SMM's answer holds the flags of 8 PSUs only"})"));
  }
}

TEST_F(JsonFormatTest, SlotsThatWereNotCountedAreAnEmptyList) {
  Reading reading = ExampleReading();
  reading.psuStatus = Disconnected<std::vector<PsuFlags>>();
  EXPECT_EQ(ValidAt(reading, "/queries/psuStatus"),
            Normal(R"json({"status": 2, "statusName": "NotConnected", "durationMs": 7,
                           "reason": "no IPMI connection could be opened (no answer)",
                           "slots": []})json"));
}

TEST_F(JsonFormatTest, SelectionTellsWhatWasSent) {
  EXPECT_EQ(ValidAt(SelectionReading({7, true, NumberOf(3), "highest"}, SucceededOutcome()),
                    "/queries/psuSelection"),
            Normal(R"({"status": 0, "statusName": "Success", "durationMs": 5, "fields": {
      "asked": {"value": 7, "text": "7"},
      "sent": {"value": 3, "text": "3"},
      "remark": {"value": "highest", "text": "highest"},
      "acknowledgement": {"value": "received", "text": "received"}}})"));
}

TEST_F(JsonFormatTest, SelectionWithoutNumberHasNullForIt) {
  const std::string query =
      ValidAt(SelectionReading({7, true, {std::nullopt, "", Absence::NotReported}, "left out"},
                               RefusedOutcome()),
              "/queries/psuSelection");
  EXPECT_EQ(At(query, "/status"), "3");
  EXPECT_EQ(At(query, "/fields/sent"),
            Normal(R"({"value": null, "text": "none", "reason": "left out"})"));
  EXPECT_EQ(At(query, "/fields/acknowledgement/value"), "\"missing\"");
}

TEST_F(JsonFormatTest, SelectionThatWasNotSentHasNullForIt) {
  EXPECT_EQ(ValidAt(SelectionReading({7, false, {}, "nothing was sent"}, RefusedOutcome()),
                    "/queries/psuSelection/fields/sent"),
            Normal(R"({"value": null, "text": "", "reason": "nothing was sent"})"));
}

TEST_F(JsonFormatTest, HealthIsAWordATextAndEachFinding) {
  const std::string document = ValidAtWithHealth(HealthyReading(), "");
  EXPECT_EQ(At(document, "/health"), Normal(R"({"severity": "OK", "text": "", "findings": []})"));
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  reading.psuStatus->value.at(2).present.value = false;
  EXPECT_EQ(ValidAtWithHealth(reading, "/health"),
            Normal(R"({"severity": "CRITICAL", "text": "node 2 power fault; PSU 3 missing",
                       "findings": [{"rule": "node:2:power-fault", "severity": "CRITICAL"},
                                    {"rule": "psu:3:presence", "severity": "WARNING"}]})"));
}

TEST_F(JsonFormatTest, HealthLeavesOutWhatIsIgnored) {
  Reading reading = HealthyReading();
  reading.psuStatus->value.at(2).present.value = false;
  EXPECT_EQ(ValidAtWithHealth(reading, "/health/severity", {ParseIgnoredFinding("psu:3:presence")}),
            "\"OK\"");
}

TEST_F(JsonFormatTest, HealthIsNotToldUnasked) {
  EXPECT_EQ(ValidAt(HealthyReading(), "/health"), "");
  EXPECT_EQ(ValidAt(FailedReading(), "/health"), "");
}

TEST_F(JsonFormatTest, PassWithoutQueriesHasOneFailure) {
  EXPECT_EQ(ValidAt(FailedReading(), ""), Normal(R"json({
    "schemaVersion": 2,
    "toolVersion": "0.1.0",
    "address": "smm1:623",
    "readAt": "2026-11-21T18:24:05.678Z",
    "durationMs": 21034,
    "failure": {"status": 2, "statusName": "NotConnected",
                "reason": "no IPMI connection could be opened (no answer)"},
    "queries": {}
  })json"));
}

TEST_F(JsonFormatTest, FailureOfAllQueriesIsToldOnceAtTheTop) {
  const std::string document = ValidAt(LostReading(), "");
  EXPECT_EQ(At(document, "/failure"), Normal(R"json({"status": 2, "statusName": "NotConnected",
                           "reason": "no IPMI connection could be opened (no answer)"})json"));
  EXPECT_EQ(At(document, "/queries"),
            Normal(R"({"generation": {"status": 0, "statusName": "Success", "durationMs": 5,
                                      "value": "second", "text": "second"},
                       "platformId": {"status": 2}, "psuSlotCount": {"status": 2},
                       "nodeCount": {"status": 2}, "machineType": {"status": 2},
                       "serialNumber": {"status": 2}, "firmwareVersion": {"status": 2},
                       "name": {"status": 2}, "psuFans": {"status": 2},
                       "nodePower": [{"node": 1, "status": 2}, {"node": 2, "status": 2}]})"));
}

TEST_F(JsonFormatTest, FailuresThatDifferAreToldWhereTheyHappened) {
  Reading otherStatus = LostReading();
  otherStatus.identity->name.status = StatusCode::NoUsableResult;
  Reading otherReason = LostReading();
  otherReason.identity->name.cause.words = "no route";
  Reading success = LostReading();
  success.identity->name = ExampleReading().identity->name;
  for (const Reading& reading : {otherStatus, otherReason, success}) {
    const std::string document = ValidAt(reading, "");
    EXPECT_EQ(At(document, "/failure"), "");
    EXPECT_EQ(At(document, "/queries/serialNumber/reason"),
              "\"no IPMI connection could be opened (no answer)\"");
  }
}

TEST_F(JsonFormatTest, FailuresOfOneReasonDifferByTheirStatus) {
  Reading reading = LostReading();
  const Cause refusal{"", Standalone::FailureCause::None, 0xC0, ""};
  for (Query<Number>* const query :
       {&reading.detection->platformId, &reading.detection->psuSlotCount,
        &reading.detection->nodeCount}) {
    query->status = StatusCode::UnusableAnswer;
    query->cause = refusal;
  }
  reading.identity.reset();
  reading.nodePower.reset();
  reading.psuFans.reset();
  EXPECT_EQ(ValidAt(reading, "/failure/status"), "3");
  reading.detection->platformId.status = StatusCode::NoUsableResult;
  EXPECT_EQ(ValidAt(reading, "/failure"), "");
}

TEST_F(JsonFormatTest, ReadingWithoutQueriesNeedsNoFailure) {
  EXPECT_EQ(At(Document(Reading()), "/failure"), "");
  EXPECT_EQ(At(Document(Reading()), "/queries"), "{}");
}

TEST_F(JsonFormatTest, WhatIsKnownOfASelectionStaysBesideTheFailureOfAll) {
  Reading reading = LostReading();
  reading.psuSelection = {DisconnectedOutcome(), {7, false, {}, "nothing was sent"}};
  const std::string document = ValidAt(reading, "");
  EXPECT_EQ(At(document, "/failure/status"), "2");
  EXPECT_EQ(At(document, "/queries/psuSelection/fields/asked/value"), "7");
  EXPECT_EQ(At(document, "/queries/nodeCount"), Normal(R"({"status": 2})"));
}

}  // namespace
}  // namespace Tavrin
