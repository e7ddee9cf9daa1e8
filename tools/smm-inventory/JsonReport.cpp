#include "tools/smm-inventory/JsonReport.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "module/smm/smm_inventory/StatusCode.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/FailureWords.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchemaVersion = 1;
constexpr int kIndent = 2;

bool IsPrintableAscii(char c) { return c >= ' ' && c <= '~'; }

Json ToValue(const Field& field, const std::string& text) {
  if (!field.absence.empty()) {
    return nullptr;
  }
  if (field.kind == Field::Kind::Reading) {
    if (const std::optional<int> number = Standalone::ParseStrictly(text)) {
      return *number;
    }
  }
  return text;
}

/// Nothing says which encoding the SMM's bytes are in. A text with other bytes than printable ASCII
/// is therefore given escaped, and its bytes beside it.
Json ToJson(const Field& field) {
  Json json;
  if (field.text) {
    const bool isPlain = std::all_of(field.text->begin(), field.text->end(), IsPrintableAscii);
    const std::string text = isPlain ? *field.text : Standalone::EscapeControlBytes(*field.text);
    json["value"] = ToValue(field, text);
    json["text"] = text;
    if (!isPlain) {
      json["bytes"] = std::vector<std::uint8_t>(field.text->begin(), field.text->end());
    }
  } else {
    json["value"] = nullptr;
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
    json.push_back({{"slot", slot.number}, {"fields", ToJson(slot.fields)}});
  }
  return json;
}

Json ToJson(const Query& query) {
  Json json;
  if (query.shape == Query::Shape::RecordOfNode) {
    json["node"] = query.rows.front().number;
  }
  json["status"] = query.status;
  json["statusName"] = StatusName(query.status);
  if (query.status != StatusCode::Success) {
    json["reason"] = FailureReason(query.status, query.cause);
  }
  if (!query.note.empty()) {
    json["note"] = query.note;
  }
  switch (query.shape) {
    case Query::Shape::OneField:
      json.update(ToJson(query.rows.front().fields.front()));
      break;
    case Query::Shape::OneRecord:
    case Query::Shape::RecordOfNode:
      json["fields"] = ToJson(query.rows.front().fields);
      break;
    case Query::Shape::RecordPerSlot:
      json["slots"] = ToJson(query.rows);
      break;
  }
  return json;
}

Json Heading(const std::string& address) {
  return {{"schemaVersion", kSchemaVersion}, {"address", address}};
}

}  // namespace

void PrintJson(std::ostream& out, const std::string& address,
               const std::vector<Section>& sections) {
  Json queries = Json::object();
  for (const Section& section : sections) {
    for (const Query& query : section.queries) {
      if (query.shape == Query::Shape::RecordOfNode) {
        queries[query.key].push_back(ToJson(query));
      } else {
        queries[query.key] = ToJson(query);
      }
    }
  }
  Json document = Heading(address);
  document["queries"] = std::move(queries);
  out << document.dump(kIndent) << std::endl;
}

void PrintJsonFailure(std::ostream& out, const std::string& address, int status,
                      const Cause& cause) {
  Json document = Heading(address);
  document["failure"] = {{"status", status},
                         {"statusName", StatusName(status)},
                         {"reason", FailureReason(status, cause)}};
  document["queries"] = Json::object();
  out << document.dump(kIndent) << std::endl;
}

}  // namespace Tavrin
