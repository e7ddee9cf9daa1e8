#include "tools/smm-inventory/Describe.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "tools/smm-inventory/FailureWords.h"

namespace Tavrin {
namespace {

using Fields = std::vector<Field>;

constexpr std::string_view kPsuNamePrefix = "PSU";

// The library takes one byte a flag from the answer to the status of the PSUs.
constexpr std::size_t kSlotsWithFlags = 8;

Field Text(const char* key, const char* label, const std::string& text) {
  return {key, label, Field::Kind::Text, text, ""};
}

/// Readings of 0, and for some also the largest possible, come as "N/A" from the library.
Field Reading(const char* key, const char* label, const std::string& text) {
  const char* const absence = text == "N/A" ? "not reported by the SMM" : "";
  return {key, label, Field::Kind::Reading, text, absence};
}

/// A reading of the second fan, whose text is empty where there is none.
Field SecondFanReading(const char* key, const char* label, const std::string& text) {
  Field field = Reading(key, label, text);
  field.absence = text.empty() ? "a first-generation SMM reports one fan a PSU" : field.absence;
  return field;
}

Fields Unread(Fields fields, const std::string& reason) {
  for (Field& field : fields) {
    field.text.reset();
    field.absence = reason;
  }
  return fields;
}

template <typename Value>
std::string ReasonOf(const QueryResult<Value>& result) {
  return FailureReason(result.status, result.cause);
}

template <typename Value, typename Describe>
Query DescribeOne(const char* key, const char* name, Query::Shape shape, std::size_t number,
                  const QueryResult<Value>& result, Describe describe) {
  Fields fields = describe(result.value);
  if (result.status != StatusCode::Success) {
    fields = Unread(std::move(fields), ReasonOf(result));
  }
  return {key, name, shape, result.status, result.cause, {{number, std::move(fields)}}, ""};
}

template <typename Value, typename ToField>
Query DescribeField(const char* key, const char* label, const QueryResult<Value>& result,
                    ToField toField) {
  return DescribeOne(key, label, Query::Shape::OneField, 0, result,
                     [&](const Value& value) { return Fields{toField(key, label, value)}; });
}

Query DescribeText(const char* key, const char* label, const QueryResult<std::string>& result) {
  return DescribeField(key, label, result, Text);
}

template <typename Number>
Query DescribeNumber(const char* key, const char* label, const QueryResult<Number>& result) {
  return DescribeField(key, label, result,
                       [](const char* fieldKey, const char* fieldLabel, Number number) {
                         return Reading(fieldKey, fieldLabel, std::to_string(number));
                       });
}

template <typename Value, typename Describe>
std::vector<Query> DescribeNodes(const char* key, const char* name,
                                 const std::vector<QueryResult<Value>>& nodes, Describe describe) {
  std::vector<Query> queries;
  for (std::size_t index = 0; index < nodes.size(); ++index) {
    queries.push_back(
        DescribeOne(key, name, Query::Shape::RecordOfNode, index + 1, nodes[index], describe));
  }
  return queries;
}

/// The slot of a record that is named "PSU" and the slot's number.
template <typename Record>
std::size_t SlotOf(const Record& record) {
  std::size_t slot = 0;
  const std::string_view name = record.name;
  if (name.substr(0, kPsuNamePrefix.size()) == kPsuNamePrefix) {
    std::from_chars(name.data() + kPsuNamePrefix.size(), name.data() + name.size(), slot);
  }
  return slot;
}

/// One row a slot; a slot without a record has a row whose fields say why.
template <typename Record, typename Describe>
Query DescribeSlots(const char* key, const char* name,
                    const QueryResult<std::vector<Record>>& result, std::size_t slotCount,
                    Describe describe) {
  const bool failed = result.status != StatusCode::Success;
  const std::string reason =
      failed ? ReasonOf(result) : "the SMM gave no usable answer for this slot";
  Query query{key, name, Query::Shape::RecordPerSlot, result.status, result.cause, {}, ""};
  const auto& records = result.value;
  const std::size_t last =
      records.empty() ? slotCount : std::max(slotCount, SlotOf(records.back()));
  for (std::size_t slot = 1; slot <= last; ++slot) {
    const auto record =
        std::find_if(records.begin(), records.end(),
                     [slot](const Record& candidate) { return SlotOf(candidate) == slot; });
    query.rows.push_back(
        {slot, record == records.end() ? Unread(describe(Record{}), reason) : describe(*record)});
  }
  return query;
}

Field DescribeGeneration(const char* key, const char* label, SMMIype type) {
  switch (type) {
    case SMM_FIRST_GENERATION:
      return Text(key, label, "first");
    case SMM_SECOND_GENERATION:
      return Text(key, label, "second");
  }
  return Text(key, label, fmt::format("unknown (type {})", static_cast<int>(type)));
}

Fields DescribePower(const ChassisPowerCon& power) {
  return {Reading("minPower", "minimum", power.minPower),
          Reading("avgPower", "average", power.avgPower),
          Reading("maxPower", "maximum", power.maxPower)};
}

Fields DescribeCaps(const ChassisPowerCap& caps) {
  return {Reading("minCap", "range minimum", caps.minCap),
          Reading("maxCap", "range maximum", caps.maxCap),
          Reading("protectiveCap", "protective cap", caps.protectiveCap),
          Reading("userCap", "user cap", caps.userCap),
          Reading("thermalCap", "thermal cap", caps.thermalCap)};
}

Fields DescribeNode(const NodeStatus& node) {
  return {Text("powerState", "power state", node.powerState), Reading("width", "width", node.width),
          Reading("height", "height", node.height),
          Reading("permissionState", "permission", std::to_string(node.permissionState))};
}

Fields DescribeFans(const PSUFanSpeed& fans) {
  return {Text("name", "name", fans.name),
          Reading("speedA", "speed A", fans.speedA),
          Reading("patA", "Pat A", fans.patA),
          SecondFanReading("speedB", "speed B", fans.speedB),
          SecondFanReading("patB", "Pat B", fans.patB),
          Text("status", "status", fans.status)};
}

Fields DescribeFirmware(const PSUFwInfo& firmware) {
  return {Text("name", "name", firmware.name),
          Text("identifier", "identifier", firmware.identifier),
          Text("version", "version", firmware.version),
          Text("description", "description", firmware.description)};
}

Fields DescribeFlags(const PSUStatus& status) {
  return {Text("epow", "EPOW", status.epow), Text("throttle", "throttle", status.throttle),
          Text("present", "presence", status.present),
          Text("powerGood", "power good", status.powerGood)};
}

Fields DescribeSelection(const PsuSelection& selection, bool isAcknowledged) {
  Field sent = Reading("sent", "sent", selection.isSent ? "none" : "");
  if (selection.sent) {
    sent.text = fmt::to_string(static_cast<unsigned int>(*selection.sent));
  } else {
    sent.absence = selection.remark;
  }
  return {Reading("asked", "asked for", std::to_string(selection.asked)), sent,
          Text("remark", "remark", selection.remark),
          Text("acknowledgement", "acknowledgement", isAcknowledged ? "received" : "missing")};
}

/// What the library gives for a slot without flags looks like those of an absent PSU.
Fields UntoldFlags() {
  Fields fields = DescribeFlags({});
  for (Field& field : fields) {
    field.absence =
        fmt::format("the SMM's answer holds the flags of {} PSUs only", kSlotsWithFlags);
  }
  return fields;
}

std::string PsuStatusNote(const QueryResult<std::vector<PSUStatus>>& status) {
  const bool hasSlotsWithoutFlags =
      status.status == StatusCode::Success && status.value.size() > kSlotsWithFlags;
  return hasSlotsWithoutFlags ? fmt::format(
                                    "The SMM's answer holds the flags of {} PSUs only; those of "
                                    "any later slot are not told.",
                                    kSlotsWithFlags)
                              : "";
}

}  // namespace

Section DescribeDetection(const Detection& detection) {
  return {"enclosure",
          {DescribeField("generation", "generation", detection.generation, DescribeGeneration),
           DescribeNumber("platformId", "platform id", detection.platformId),
           DescribeNumber("psuSlotCount", "PSU slots", detection.psuSlotCount),
           DescribeNumber("nodeCount", "nodes", detection.nodeCount)}};
}

Section DescribeIdentity(const Identity& identity) {
  return {"identity",
          {DescribeText("machineType", "machine type", identity.machineType),
           DescribeText("serialNumber", "serial number", identity.serialNumber),
           DescribeText("firmwareVersion", "firmware version", identity.firmwareVersion),
           DescribeText("name", "name", identity.name)}};
}

Section DescribeChassisPower(const QueryResult<ChassisPowerCon>& power) {
  return {"chassis power",
          {DescribeOne("chassisPower", "chassis power", Query::Shape::OneRecord, 0, power,
                       DescribePower)}};
}

Section DescribePowerCaps(const QueryResult<ChassisPowerCap>& caps) {
  return {"power caps",
          {DescribeOne("powerCaps", "power caps", Query::Shape::OneRecord, 0, caps, DescribeCaps)}};
}

Section DescribeNodeStatus(const std::vector<QueryResult<NodeStatus>>& nodes) {
  return {"node status", DescribeNodes("nodeStatus", "node status", nodes, DescribeNode)};
}

Section DescribeNodePower(const std::vector<QueryResult<ChassisPowerCon>>& nodes) {
  return {"node power", DescribeNodes("nodePower", "node power", nodes, DescribePower)};
}

Section DescribePsuFans(const QueryResult<std::vector<PSUFanSpeed>>& fans, std::size_t slotCount) {
  return {"PSU fans", {DescribeSlots("psuFans", "PSU fans", fans, slotCount, DescribeFans)}};
}

Section DescribePsuFirmware(const QueryResult<std::vector<PSUFwInfo>>& firmware,
                            std::size_t slotCount) {
  return {"PSU firmware",
          {DescribeSlots("psuFirmware", "PSU firmware", firmware, slotCount, DescribeFirmware)}};
}

Section DescribePsuStatus(const QueryResult<std::vector<PSUStatus>>& status) {
  Query query{"psuStatus",  "PSU status", Query::Shape::RecordPerSlot, status.status,
              status.cause, {},           PsuStatusNote(status)};
  for (const PSUStatus& flags : status.value) {
    const std::size_t slot = query.rows.size() + 1;
    Fields fields = slot > kSlotsWithFlags ? UntoldFlags() : DescribeFlags(flags);
    if (status.status != StatusCode::Success) {
      fields = Unread(std::move(fields), ReasonOf(status));
    }
    query.rows.push_back({slot, std::move(fields)});
  }
  return {"PSU status", {query}};
}

Section DescribePsuSelection(const QueryResult<PsuSelection>& selection) {
  const bool isAcknowledged = selection.status == StatusCode::Success;
  // Named after what is missing when the selection fails.
  return {"PSU selection",
          {{"psuSelection",
            "acknowledgement of the PSU selection",
            Query::Shape::OneRecord,
            selection.status,
            selection.cause,
            {{0, DescribeSelection(selection.value, isAcknowledged)}},
            ""}}};
}

}  // namespace Tavrin
