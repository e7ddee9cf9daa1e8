#include "report/JsonFormat.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "report/Describe.h"
#include "report/Escape.h"
#include "report/FailureWords.h"
#include "report/Health.h"
#include "report/HealthRules.h"
#include "report/Pieces.h"
#include "report/SharedFailure.h"
#include "report/UtcTime.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchemaVersion = 2;
constexpr int kIndent = 2;

Json ToJson(std::monostate /*nothing*/) { return nullptr; }
Json ToJson(bool flag) { return flag; }
Json ToJson(std::int64_t number) { return number; }
Json ToJson(const std::string& text) { return PlainText(text); }

/// A text with other bytes than printable ASCII is escaped, and its bytes stand beside it.
Json ToJson(const Field& field) {
  Json json;
  json["value"] = std::visit([](const auto& value) { return ToJson(value); }, field.value);
  if (field.text) {
    json["text"] = PlainText(*field.text);
  }
  if (field.text && !IsPlain(*field.text)) {
    json["bytes"] = std::vector<std::uint8_t>(field.text->begin(), field.text->end());
  }
  if (!field.absence.empty()) {
    json["reason"] = field.absence;
  }
  return json;
}

Json ToJson(const std::vector<Field>& fields) {
  Json json = Json::object();
  for (const Field& field : fields) {
    json[field.key] = ToJson(field);
  }
  return json;
}

Json ToJson(const std::vector<Row>& slots) {
  Json json = Json::array();
  for (const Row& slot : slots) {
    Json record;
    record["slot"] = slot.number;
    record["fields"] = ToJson(slot.fields);
    json.push_back(std::move(record));
  }
  return json;
}

void AddOutcome(Json& json, const QueryOutcome& outcome) {
  json["status"] = outcome.status;
  json["statusName"] = StatusName(outcome.status);
  if (!outcome.Succeeded()) {
    json["reason"] = FailureReason(outcome.status, outcome.cause);
  }
}

void AddValues(Json& json, const Answer& answer) {
  if (!answer.note.empty()) {
    json["note"] = answer.note;
  }
  switch (answer.shape) {
    case Answer::Shape::OneField:
      json.update(ToJson(answer.rows.front().fields.front()));
      break;
    case Answer::Shape::OneRecord:
    case Answer::Shape::RecordOfNode:
      json["fields"] = ToJson(answer.rows.front().fields);
      break;
    case Answer::Shape::RecordPerSlot:
      json["slots"] = ToJson(answer.rows);
      break;
  }
}

bool HasValue(const Answer& answer) {
  const auto isValue = [](const Field& field) { return field.absence.empty(); };
  return std::any_of(answer.rows.begin(), answer.rows.end(), [isValue](const Row& row) {
    return std::any_of(row.fields.begin(), row.fields.end(), isValue);
  });
}

/// A query whose failure is told at the top has its status alone, unless it gave something all the
/// same.
Json ToJson(const Answer& answer, bool isToldAtTop) {
  Json json = Json::object();
  if (answer.shape == Answer::Shape::RecordOfNode) {
    json["node"] = answer.rows.front().number;
  }
  if (isToldAtTop && !HasValue(answer)) {
    json["status"] = answer.outcome.status;
    return json;
  }
  AddOutcome(json, answer.outcome);
  json["durationMs"] = answer.outcome.duration.count();
  AddValues(json, answer);
  return json;
}

Json ToJson(const std::vector<Answer>& answers, bool isToldAtTop) {
  Json queries = Json::object();
  for (const Answer& answer : answers) {
    if (answer.shape == Answer::Shape::RecordOfNode) {
      queries[answer.key].push_back(ToJson(answer, isToldAtTop));
    } else {
      queries[answer.key] = ToJson(answer, isToldAtTop);
    }
  }
  return queries;
}

Json ToJson(const std::vector<Finding>& findings) {
  Json health = {{"severity", SeverityWord(WorstOf(findings))},
                 {"text", FindingsText(findings)},
                 {"findings", Json::array()}};
  for (const Finding& finding : findings) {
    health["findings"].push_back(
        {{"rule", NameOf(finding)}, {"severity", SeverityWord(finding.rule->severity)}});
  }
  return health;
}

/// Adds to what the document says of the enclosure's place already.
void AddDocument(Json& document, const Reading& reading, const ReportContext& context) {
  const std::vector<Answer> answers = AllAnswers(reading);
  const std::optional<QueryOutcome> failure = SharedFailure(reading, answers);
  document["schemaVersion"] = kSchemaVersion;
  document["toolVersion"] = context.toolVersion;
  document["address"] = PlainText(reading.address);
  document["readAt"] = UtcTime(reading.readAt);
  document["durationMs"] = reading.duration.count();
  if (failure) {
    AddOutcome(document["failure"], *failure);
  }
  if (context.isHealthAsked) {
    document["health"] = ToJson(FindingsOf(reading, context.ignored));
  }
  document["queries"] = ToJson(answers, failure.has_value());
}

std::string IndentedDocument(const EnclosureReading& enclosure, const ReportContext& context) {
  Json document;
  AddDocument(document, enclosure.reading, context);
  return document.dump(kIndent) + '\n';
}

std::string DocumentLine(const EnclosureReading& enclosure, const ReportContext& context) {
  Json document;
  document["host"] = PlainText(enclosure.reading.address);
  document["index"] = enclosure.index;
  AddDocument(document, enclosure.reading, context);
  return document.dump() + '\n';
}

constexpr FormatOfSeveral kLines = {Order::AsEnded, "", DocumentLine, NoEndOfSeveral};

}  // namespace

Format JsonFormat() {
  return {"json", "One JSON document, for programs", IndentedDocument, kLines};
}

Format JsonLinesFormat() {
  return {"jsonl", "One JSON line an enclosure as it ends", DocumentLine, kLines};
}

}  // namespace Tavrin
