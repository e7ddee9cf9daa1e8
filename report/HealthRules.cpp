#include "report/HealthRules.h"

#include <algorithm>
#include <array>
#include <optional>

#include "report/Describe.h"
#include "report/SharedFailure.h"
#include "report/Words.h"

namespace Tavrin {
namespace {

constexpr std::string_view kFanPresenceRule = "fan-presence";
constexpr std::string_view kFirmwareRule = "firmware";

const NodeState* NodeAt(const Reading& reading, std::size_t number) {
  const bool isThere = reading.nodeStatus && number >= 1 && number <= reading.nodeStatus->size();
  return isThere ? &(*reading.nodeStatus)[number - 1].value : nullptr;
}

template <typename Record>
const Record* SlotAt(const std::optional<SlotQuery<Record>>& query, std::size_t number) {
  if (!query) {
    return nullptr;
  }
  const auto record =
      std::find_if(query->value.begin(), query->value.end(),
                   [number](const Record& candidate) { return candidate.slot == number; });
  return record == query->value.end() ? nullptr : &*record;
}

/// What the SMM's answer has no place for is not unread.
template <typename Type>
bool IsUnread(const Value<Type>& value) {
  return !value.value && value.absence != Absence::FlagsNotTold;
}

/// Whether none of the records is there: the part failed before it gave any or, unless the failure
/// of the whole reading says so already, was never read.
template <typename Queries>
bool AreMissing(const Reading& reading, const std::optional<Queries>& part, bool isEmpty) {
  return part ? isEmpty : !reading.failure.has_value();
}

template <typename Record>
bool AreSlotsMissing(const Reading& reading, const std::optional<SlotQuery<Record>>& query) {
  return AreMissing(reading, query, query && query->value.empty());
}

template <NodePowerState state>
bool HasPowerState(const Reading& reading, std::size_t number) {
  const NodeState* const node = NodeAt(reading, number);
  return node != nullptr && node->powerState.value == state;
}

bool IsNodeUnread(const Reading& reading, std::size_t number) {
  if (number == 0) {
    return AreMissing(reading, reading.nodeStatus,
                      reading.nodeStatus && reading.nodeStatus->empty());
  }
  const NodeState* const node = NodeAt(reading, number);
  return node != nullptr && IsUnread(node->powerState);
}

template <Flag PsuFlags::*flag, bool value>
bool HasFlag(const Reading& reading, std::size_t number) {
  const PsuFlags* const flags = SlotAt(reading.psuStatus, number);
  return flags != nullptr && (flags->*flag).value == value;
}

/// An empty slot has no power that could be good.
bool IsPowerBad(const Reading& reading, std::size_t number) {
  return HasFlag<&PsuFlags::present, true>(reading, number) &&
         HasFlag<&PsuFlags::powerGood, false>(reading, number);
}

bool HasFanState(const Reading& reading, std::size_t number, PsuFanState state) {
  const PsuFans* const fans = SlotAt(reading.psuFans, number);
  return fans != nullptr && fans->status.value == state;
}

bool IsFanAbnormal(const Reading& reading, std::size_t number) {
  return HasFanState(reading, number, PsuFanState::Abnormal);
}

bool IsToldAbsent(const Reading& reading, std::size_t number) {
  return HasFlag<&PsuFlags::present, false>(reading, number);
}

/// The fan of a PSU that is told to be absent is no fault of its own.
bool IsFanMissing(const Reading& reading, std::size_t number) {
  return HasFanState(reading, number, PsuFanState::NotPresent) && !IsToldAbsent(reading, number);
}

/// By the flag; where that is not there, by the fan.
bool IsSlotEmpty(const Reading& reading, std::size_t number) {
  return IsToldAbsent(reading, number) ||
         (IsFanMissing(reading, number) && !HasFlag<&PsuFlags::present, true>(reading, number));
}

bool AreFlagsUnread(const PsuFlags& flags) {
  return IsUnread(flags.epow) || IsUnread(flags.throttle) || IsUnread(flags.present) ||
         IsUnread(flags.powerGood);
}

bool IsPsuStatusUnread(const Reading& reading, std::size_t number) {
  const bool areAllMissing = AreSlotsMissing(reading, reading.psuStatus);
  if (number == 0 || areAllMissing || !reading.psuStatus) {
    return number == 0 && areAllMissing;
  }
  const PsuFlags* const flags = SlotAt(reading.psuStatus, number);
  return flags == nullptr || AreFlagsUnread(*flags);
}

bool IsFanStatusUnknown(const Reading& reading, std::size_t number) {
  if (number == 0) {
    return AreSlotsMissing(reading, reading.psuFans);
  }
  const PsuFans* const fans = SlotAt(reading.psuFans, number);
  return fans != nullptr && !IsSlotEmpty(reading, number) &&
         (IsUnread(fans->status) || fans->status.value == PsuFanState::Unknown);
}

/// Firmware says little of health, so that nobody has to read it for that.
bool IsFirmwareUnread(const Reading& reading, std::size_t number) {
  if (number == 0) {
    return reading.psuFirmware && reading.psuFirmware->value.empty();
  }
  const PsuFirmware* const firmware = SlotAt(reading.psuFirmware, number);
  return firmware != nullptr && !IsSlotEmpty(reading, number) &&
         (IsUnread(firmware->identifier) || IsUnread(firmware->version));
}

bool IsNothingRead(const Reading& reading, std::size_t /*number*/) {
  return reading.failure || SharedFailure(reading, AllAnswers(reading));
}

bool IsNeitherGeneration(const Value<SMMIype>& generation) {
  return !generation.value || Word(*generation.value) == "unknown";
}

bool IsKindUnknown(const Reading& reading, std::size_t /*number*/) {
  if (!reading.detection) {
    return !reading.failure.has_value();
  }
  const Detection& detection = *reading.detection;
  return IsNeitherGeneration(detection.generation.value) || IsUnread(detection.platformId.value) ||
         IsUnread(detection.psuSlotCount.value) || IsUnread(detection.nodeCount.value);
}

constexpr std::array kRules = {
    HealthRule{HealthKind::Node, "power-fault", Severity::Critical, "power fault",
               "The SMM states a power fault of the node.",
               HasPowerState<NodePowerState::PowerFault>},
    HealthRule{
        HealthKind::Node, "fault", Severity::Critical, "fault",
        "The SMM gives a power state that is none of on, off, no permission and power fault, which "
        "stands for a fault.",
        HasPowerState<NodePowerState::Fault>},
    HealthRule{
        HealthKind::Psu, "power-good", Severity::Critical, "power not good",
        "A PSU is in the slot and does not say that its power is good: it may carry no load.",
        IsPowerBad},
    HealthRule{HealthKind::Psu, "epow", Severity::Critical, "early power-off warning",
               "The PSU warns that it is about to switch off.", HasFlag<&PsuFlags::epow, true>},
    HealthRule{HealthKind::Psu, kPresenceRule, Severity::Warning, "missing",
               "No PSU is in the slot: redundancy may be gone, or the site leaves the slot empty.",
               IsToldAbsent},
    HealthRule{HealthKind::Psu, "throttle", Severity::Warning, "throttling",
               "The PSU triggers throttling: the enclosure runs, but may be slower.",
               HasFlag<&PsuFlags::throttle, true>},
    HealthRule{HealthKind::Psu, "fan", Severity::Warning, "fan abnormal",
               "The SMM calls the fan status abnormal: the PSU runs, but may become too hot.",
               IsFanAbnormal},
    HealthRule{HealthKind::Psu, kFanPresenceRule, Severity::Warning, "fan not present",
               "The SMM finds no fan, although it does not say that the slot is empty.",
               IsFanMissing},
    HealthRule{
        HealthKind::Enclosure, kUnreadRule, Severity::Unknown, "not read",
        "Nobody was there, the user was refused, the generation stayed unknown or time was up: "
        "nothing says that all is well.",
        IsNothingRead},
    HealthRule{HealthKind::Enclosure, "kind", Severity::Unknown, "kind of enclosure not known",
               "Without generation and platform the number of nodes and PSUs is a guess: some may "
               "not have "
               "been looked at.",
               IsKindUnknown},
    HealthRule{HealthKind::Node, "status", Severity::Unknown, "status not read",
               "The query failed or was not made: the node may have a fault.", IsNodeUnread},
    HealthRule{HealthKind::Psu, "status", Severity::Unknown, "status not read",
               "The query failed or was not made: the PSU may have a fault, or not be there.",
               IsPsuStatusUnread},
    HealthRule{HealthKind::Psu, "fan-status", Severity::Unknown, "fan status not known",
               "The query failed or was not made, or the SMM gives a code of no known meaning: the "
               "fan may "
               "be abnormal.",
               IsFanStatusUnknown},
    HealthRule{
        HealthKind::Psu, kFirmwareRule, Severity::Unknown, "firmware not read",
        "A PSU that is there did not answer when its firmware was read. Looked at where firmware "
        "was asked for.",
        IsFirmwareUnread},
};

}  // namespace

std::string_view SeverityWord(Severity severity) {
  switch (severity) {
    case Severity::Ok:
      return "OK";
    case Severity::Warning:
      return "WARNING";
    case Severity::Critical:
      return "CRITICAL";
    case Severity::Unknown:
      break;
  }
  return "UNKNOWN";
}

std::string_view KindWord(HealthKind kind) {
  switch (kind) {
    case HealthKind::Node:
      return "node";
    case HealthKind::Psu:
      return "psu";
    case HealthKind::Enclosure:
      break;
  }
  return "enclosure";
}

const std::vector<HealthRule>& HealthRules() {
  static const std::vector<HealthRule> rules(kRules.begin(), kRules.end());
  return rules;
}

bool IsSignOfEmptySlot(const HealthRule& rule) {
  return rule.kind == HealthKind::Psu &&
         (rule.name == kFanPresenceRule || rule.name == kFirmwareRule);
}

}  // namespace Tavrin
