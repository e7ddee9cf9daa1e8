#include "report/Describe.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

#include "report/FailureWords.h"
#include "report/Words.h"

namespace Tavrin {
namespace {

using Fields = std::vector<Field>;

std::string HeldFlags() { return fmt::format("the flags of {} PSUs only", kSlotsWithFlags); }

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
        return "the SMM's answer holds " + HeldFlags();
      case Absence::SlotUnanswered:
        return "the SMM gave no usable answer for this slot";
      case Absence::QueryFailed:
        break;
    }
    return failure_;
  }

  std::string failure_;
};

Fields FieldsOf(const PowerReadings& power, const FieldMaker& field) {
  return {field("minPower", "minimum", power.minimum), field("avgPower", "average", power.average),
          field("maxPower", "maximum", power.maximum)};
}

Fields FieldsOf(const PowerCaps& caps, const FieldMaker& field) {
  return {field("minCap", "range minimum", caps.rangeMinimum),
          field("maxCap", "range maximum", caps.rangeMaximum),
          field("protectiveCap", "protective cap", caps.protectiveCap),
          field("userCap", "user cap", caps.userCap),
          field("thermalCap", "thermal cap", caps.thermalCap)};
}

Fields FieldsOf(const NodeState& node, const FieldMaker& field) {
  return {field("powerState", "power state", node.powerState), field("width", "width", node.width),
          field("height", "height", node.height),
          field("permissionState", "permission", node.permission)};
}

Fields FieldsOf(const PsuFans& fans, const FieldMaker& field) {
  return {field("name", "name", fans.name),  field("speedA", "speed A", fans.speedA),
          field("patA", "Pat A", fans.patA), field("speedB", "speed B", fans.speedB),
          field("patB", "Pat B", fans.patB), field("status", "status", fans.status)};
}

Fields FieldsOf(const PsuFirmware& firmware, const FieldMaker& field) {
  return {field("name", "name", firmware.name),
          field("identifier", "identifier", firmware.identifier),
          field("version", "version", firmware.version),
          field("description", "description", firmware.description)};
}

Fields FieldsOf(const PsuFlags& flags, const FieldMaker& field) {
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

template <typename Type>
std::vector<Answer> AnswersOf(const char* key, const char* name, const Query<Type>& query) {
  Answer answer = Unfilled(key, name, Answer::Shape::OneRecord, query);
  answer.rows = {{0, FieldsOf(query.value, FieldMaker(query))}};
  return {std::move(answer)};
}

template <typename Type>
std::vector<Answer> AnswersOf(const char* key, const char* name,
                              const std::vector<Query<Type>>& nodes) {
  std::vector<Answer> answers;
  for (const Query<Type>& node : nodes) {
    Answer answer = Unfilled(key, name, Answer::Shape::RecordOfNode, node);
    answer.rows = {{answers.size() + 1, FieldsOf(node.value, FieldMaker(node))}};
    answers.push_back(std::move(answer));
  }
  return answers;
}

template <typename Record>
std::vector<Answer> AnswersOf(const char* key, const char* name, const SlotQuery<Record>& query) {
  Answer answer = Unfilled(key, name, Answer::Shape::RecordPerSlot, query);
  for (const Record& record : query.value) {
    answer.rows.push_back({record.slot, FieldsOf(record, FieldMaker(query))});
  }
  return {std::move(answer)};
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
  Section section{"PSU status", AnswersOf("psuStatus", "PSU status", status)};
  const bool hasSlotsWithoutFlags = std::any_of(
      status.value.begin(), status.value.end(),
      [](const PsuFlags& flags) { return flags.present.absence == Absence::FlagsNotTold; });
  if (hasSlotsWithoutFlags) {
    section.answers.front().note = fmt::format(
        "The SMM's answer holds {}; those of any later slot are not told.", HeldFlags());
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

/// A section of one title, which is its query's name, too.
template <typename Queries>
std::optional<Section> IfThere(const char* key, const char* name,
                               const std::optional<Queries>& part) {
  return IfThere(part, [key, name](const Queries& queries) {
    return Section{name, AnswersOf(key, name, queries)};
  });
}

}  // namespace

std::optional<Section> Describe(const Reading& reading, Part part) {
  switch (part) {
    case Part::Detection:
      return IfThere(reading.detection, DescribeDetection);
    case Part::Identity:
      return IfThere(reading.identity, DescribeIdentity);
    case Part::ChassisPower:
      return IfThere("chassisPower", "chassis power", reading.chassisPower);
    case Part::PowerCaps:
      return IfThere("powerCaps", "power caps", reading.powerCaps);
    case Part::NodeStatus:
      return IfThere("nodeStatus", "node status", reading.nodeStatus);
    case Part::NodePower:
      return IfThere("nodePower", "node power", reading.nodePower);
    case Part::PsuFans:
      return IfThere("psuFans", "PSU fans", reading.psuFans);
    case Part::PsuFirmware:
      return IfThere("psuFirmware", "PSU firmware", reading.psuFirmware);
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
