#include "report/Describe.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

#include "report/FailureWords.h"
#include "report/Words.h"

namespace Tavrin {
namespace {

using Fields = std::vector<Field>;

// The library takes one byte a flag from the answer to the status of the PSUs.
constexpr std::size_t kSlotsWithFlags = 8;

std::string FlagsWords() {
  return fmt::format("the SMM's answer holds the flags of {} PSUs only", kSlotsWithFlags);
}

// What has no text of the library's is shown by these.

template <typename Type>
std::string OwnText(const Type& /*value*/) {
  return "";
}

std::string OwnText(std::int64_t number) { return fmt::to_string(number); }

std::string OwnText(SMMIype generation) {
  const std::string word = Word(generation);
  return word == "unknown" ? fmt::format("unknown (type {})", static_cast<int>(generation)) : word;
}

/// Makes the fields of one query.
class FieldMaker {
 public:
  explicit FieldMaker(const QueryOutcome& outcome)
      : failure_(FailureReason(outcome.status, outcome.cause)) {}

  template <typename Type>
  Field operator()(const char* key, const char* label, const Value<Type>& value) const {
    Field field{key, label, {}, TextOf(value), WordsOf(value.absence)};
    if (value.value) {
      field.value = Word(*value.value);
    }
    return field;
  }

 private:
  template <typename Type>
  static std::optional<std::string> TextOf(const Value<Type>& value) {
    switch (value.absence) {
      case Absence::QueryFailed:
      case Absence::SlotUnanswered:
        return std::nullopt;
      case Absence::FlagsNotTold:
        // What the library gives for a slot without flags looks like those of an absent PSU.
        return "";
      default:
        return value.value && value.text.empty() ? OwnText(*value.value) : value.text;
    }
  }

  [[nodiscard]] std::string WordsOf(Absence absence) const {
    switch (absence) {
      case Absence::None:
        return "";
      case Absence::NotReported:
        return "not reported by the SMM";
      case Absence::NoSecondFan:
        return "a first-generation SMM reports one fan a PSU";
      case Absence::FlagsNotTold:
        return FlagsWords();
      case Absence::SlotUnanswered:
        return "the SMM gave no usable answer for this slot";
      case Absence::QueryFailed:
        break;
    }
    return failure_;
  }

  std::string failure_;
};

Fields DescribePower(const PowerReadings& power, const FieldMaker& field) {
  return {field("minPower", "minimum", power.minimum), field("avgPower", "average", power.average),
          field("maxPower", "maximum", power.maximum)};
}

Fields DescribeCaps(const PowerCaps& caps, const FieldMaker& field) {
  return {field("minCap", "range minimum", caps.rangeMinimum),
          field("maxCap", "range maximum", caps.rangeMaximum),
          field("protectiveCap", "protective cap", caps.protectiveCap),
          field("userCap", "user cap", caps.userCap),
          field("thermalCap", "thermal cap", caps.thermalCap)};
}

Fields DescribeNode(const NodeState& node, const FieldMaker& field) {
  return {field("powerState", "power state", node.powerState), field("width", "width", node.width),
          field("height", "height", node.height),
          field("permissionState", "permission", node.permission)};
}

Fields DescribeFans(const PsuFans& fans, const FieldMaker& field) {
  return {field("name", "name", fans.name),  field("speedA", "speed A", fans.speedA),
          field("patA", "Pat A", fans.patA), field("speedB", "speed B", fans.speedB),
          field("patB", "Pat B", fans.patB), field("status", "status", fans.status)};
}

Fields DescribeFirmware(const PsuFirmware& firmware, const FieldMaker& field) {
  return {field("name", "name", firmware.name),
          field("identifier", "identifier", firmware.identifier),
          field("version", "version", firmware.version),
          field("description", "description", firmware.description)};
}

Fields DescribeFlags(const PsuFlags& flags, const FieldMaker& field) {
  return {field("epow", "EPOW", flags.epow), field("throttle", "throttle", flags.throttle),
          field("present", "presence", flags.present),
          field("powerGood", "power good", flags.powerGood)};
}

/// A text or number of ours, which is there whatever became of the query.
template <typename Type>
Field Own(const char* key, const char* label, const Type& value, const std::string& text) {
  return {key, label, value, text, ""};
}

Field DescribeSent(const PsuSelection& selection) {
  if (selection.sent.value) {
    return Own("sent", "sent", *selection.sent.value, fmt::to_string(*selection.sent.value));
  }
  return {"sent", "sent", {}, selection.isSent ? "none" : "", selection.remark};
}

template <typename Type>
Answer Unfilled(const char* key, const char* name, Answer::Shape shape, const Query<Type>& query) {
  return {key, name, shape, static_cast<const QueryOutcome&>(query), {}, ""};
}

template <typename Type>
Answer DescribeField(const char* key, const char* label, const Query<Type>& query) {
  Answer answer = Unfilled(key, label, Answer::Shape::OneField, query);
  answer.rows = {{0, {FieldMaker(query)(key, label, query.value)}}};
  return answer;
}

template <typename Type, typename DescribeRecord>
Section DescribeOne(const char* key, const char* name, const Query<Type>& query,
                    DescribeRecord describe) {
  Answer answer = Unfilled(key, name, Answer::Shape::OneRecord, query);
  answer.rows = {{0, describe(query.value, FieldMaker(query))}};
  return {name, {std::move(answer)}};
}

template <typename Type, typename DescribeRecord>
Section DescribeNodes(const char* key, const char* name, const std::vector<Query<Type>>& nodes,
                      DescribeRecord describe) {
  Section section{name, {}};
  for (const Query<Type>& node : nodes) {
    Answer answer = Unfilled(key, name, Answer::Shape::RecordOfNode, node);
    answer.rows = {{section.answers.size() + 1, describe(node.value, FieldMaker(node))}};
    section.answers.push_back(std::move(answer));
  }
  return section;
}

template <typename Record, typename DescribeRecord>
Section DescribeSlots(const char* key, const char* name, const SlotQuery<Record>& query,
                      DescribeRecord describe) {
  Answer answer = Unfilled(key, name, Answer::Shape::RecordPerSlot, query);
  for (const Record& record : query.value) {
    answer.rows.push_back({record.slot, describe(record, FieldMaker(query))});
  }
  return {name, {std::move(answer)}};
}

Section DescribeDetection(const Detection& detection) {
  return {"enclosure",
          {DescribeField(kGenerationKey, "generation", detection.generation),
           DescribeField("platformId", "platform id", detection.platformId),
           DescribeField("psuSlotCount", "PSU slots", detection.psuSlotCount),
           DescribeField("nodeCount", "nodes", detection.nodeCount)}};
}

Section DescribeIdentity(const Identity& identity) {
  return {"identity",
          {DescribeField("machineType", "machine type", identity.machineType),
           DescribeField("serialNumber", "serial number", identity.serialNumber),
           DescribeField("firmwareVersion", "firmware version", identity.firmwareVersion),
           DescribeField("name", "name", identity.name)}};
}

Section DescribePsuStatus(const SlotQuery<PsuFlags>& status) {
  Section section = DescribeSlots("psuStatus", "PSU status", status, DescribeFlags);
  const bool hasSlotsWithoutFlags = std::any_of(
      status.value.begin(), status.value.end(),
      [](const PsuFlags& flags) { return flags.present.absence == Absence::FlagsNotTold; });
  if (hasSlotsWithoutFlags) {
    section.answers.front().note = fmt::format(
        "The SMM's answer holds the flags of {} PSUs only; those of any later slot are not told.",
        kSlotsWithFlags);
  }
  return section;
}

Section DescribePsuSelection(const Query<PsuSelection>& query) {
  const PsuSelection& selection = query.value;
  const std::string acknowledgement = query.Succeeded() ? "received" : "missing";
  // Named after what is missing when the selection fails.
  Answer answer = Unfilled("psuSelection", "acknowledgement of the PSU selection",
                           Answer::Shape::OneRecord, query);
  answer.rows = {
      {0,
       {Own("asked", "asked for", std::int64_t{selection.asked}, fmt::to_string(selection.asked)),
        DescribeSent(selection), Own("remark", "remark", selection.remark, selection.remark),
        Own("acknowledgement", "acknowledgement", acknowledgement, acknowledgement)}}};
  return {"PSU selection", {std::move(answer)}};
}

template <typename Type, typename DescribePart>
std::optional<Section> IfThere(const std::optional<Type>& part, DescribePart describe) {
  return part ? std::optional<Section>(describe(*part)) : std::nullopt;
}

template <typename Type, typename DescribeRecord>
std::optional<Section> OneIfThere(const char* key, const char* name,
                                  const std::optional<Query<Type>>& query,
                                  DescribeRecord describe) {
  return IfThere(query,
                 [&](const Query<Type>& one) { return DescribeOne(key, name, one, describe); });
}

template <typename Type, typename DescribeRecord>
std::optional<Section> NodesIfThere(const char* key, const char* name,
                                    const std::optional<std::vector<Query<Type>>>& nodes,
                                    DescribeRecord describe) {
  return IfThere(nodes, [&](const std::vector<Query<Type>>& all) {
    return DescribeNodes(key, name, all, describe);
  });
}

template <typename Record, typename DescribeRecord>
std::optional<Section> SlotsIfThere(const char* key, const char* name,
                                    const std::optional<SlotQuery<Record>>& slots,
                                    DescribeRecord describe) {
  return IfThere(
      slots, [&](const SlotQuery<Record>& all) { return DescribeSlots(key, name, all, describe); });
}

}  // namespace

std::optional<Section> Describe(const Reading& reading, Part part) {
  switch (part) {
    case Part::Detection:
      return IfThere(reading.detection, DescribeDetection);
    case Part::Identity:
      return IfThere(reading.identity, DescribeIdentity);
    case Part::ChassisPower:
      return OneIfThere("chassisPower", "chassis power", reading.chassisPower, DescribePower);
    case Part::PowerCaps:
      return OneIfThere("powerCaps", "power caps", reading.powerCaps, DescribeCaps);
    case Part::NodeStatus:
      return NodesIfThere("nodeStatus", "node status", reading.nodeStatus, DescribeNode);
    case Part::NodePower:
      return NodesIfThere("nodePower", "node power", reading.nodePower, DescribePower);
    case Part::PsuFans:
      return SlotsIfThere("psuFans", "PSU fans", reading.psuFans, DescribeFans);
    case Part::PsuFirmware:
      return SlotsIfThere("psuFirmware", "PSU firmware", reading.psuFirmware, DescribeFirmware);
    case Part::PsuStatus:
      return IfThere(reading.psuStatus, DescribePsuStatus);
    case Part::PsuSelection:
      return IfThere(reading.psuSelection, DescribePsuSelection);
  }
  return std::nullopt;
}

std::vector<Answer> AllAnswers(const Reading& reading) {
  std::vector<Answer> answers;
  for (const Part part : kEveryPart) {
    if (std::optional<Section> section = Describe(reading, part)) {
      std::move(section->answers.begin(), section->answers.end(), std::back_inserter(answers));
    }
  }
  return answers;
}

}  // namespace Tavrin
