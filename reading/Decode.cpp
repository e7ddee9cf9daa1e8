#include "reading/Decode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

namespace Tavrin {
namespace {

constexpr std::string_view kPsuNamePrefix = "PSU";
constexpr const char* kNotReported = "N/A";

constexpr std::array<std::pair<std::string_view, NodePowerState>, 5> kPowerStates = {
    {{"Power ON", NodePowerState::On},
     {"Power OFF", NodePowerState::Off},
     {"No Permission", NodePowerState::NoPermission},
     {"Power Fault", NodePowerState::PowerFault},
     {"Fault", NodePowerState::Fault}}};

constexpr std::array<std::pair<std::string_view, PsuFanState>, 4> kFanStates = {
    {{"Normal", PsuFanState::Normal},
     {"Abnormal", PsuFanState::Abnormal},
     {"Not Present", PsuFanState::NotPresent},
     {"Unknown", PsuFanState::Unknown}}};

template <typename Type>
Value<Type> Absent(const std::string& text, Absence absence) {
  return {std::nullopt, text, absence};
}

template <typename Type>
Value<Type> Present(Type value, const std::string& text) {
  return {std::move(value), text, Absence::None};
}

Number DecodeNumber(const std::string& text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const bool isNumber = error == std::errc() && stop == end;
  return isNumber ? Present(number, text) : Absent<std::int64_t>(text, Absence::NotReported);
}

/// A reading of the second fan, whose text is empty where there is none.
Number DecodeSecondFan(const std::string& text) {
  return text.empty() ? Absent<std::int64_t>(text, Absence::NoSecondFan) : DecodeNumber(text);
}

template <typename Table>
auto DecodeState(const Table& table, const std::string& text)
    -> Value<typename Table::value_type::second_type> {
  using State = typename Table::value_type::second_type;
  const auto* const row = std::find_if(table.begin(), table.end(), [&text](const auto& candidate) {
    return candidate.first == text;
  });
  return row == table.end() ? Absent<State>(text, Absence::NotReported)
                            : Present(row->second, text);
}

Flag DecodeFlag(std::string_view set, std::string_view clear, const std::string& text) {
  return DecodeState(
      std::array<std::pair<std::string_view, bool>, 2>{{{set, true}, {clear, false}}}, text);
}

Value<NodeWidth> DecodeWidth(const std::string& text) {
  if (text == kNotReported) {
    return Absent<NodeWidth>(text, Absence::NotReported);
  }
  if (text == "Half" || text == "Full") {
    return Present(text == "Half" ? NodeWidth::Half : NodeWidth::Full, text);
  }
  return Present(NodeWidth::Other, text);
}

/// The slot of a record that is named "PSU" and the slot's number; 0 when it is not.
std::size_t SlotOf(std::string_view name) {
  std::size_t slot = 0;
  if (name.substr(0, kPsuNamePrefix.size()) == kPsuNamePrefix) {
    std::from_chars(name.data() + kPsuNamePrefix.size(), name.data() + name.size(), slot);
  }
  return slot;
}

PsuFans DecodeSlot(std::size_t slot, const PSUFanSpeed& record) {
  return {slot,
          TextOf(record.name),
          DecodeNumber(record.speedA),
          DecodeNumber(record.patA),
          DecodeSecondFan(record.speedB),
          DecodeSecondFan(record.patB),
          DecodeState(kFanStates, record.status)};
}

PsuFirmware DecodeSlot(std::size_t slot, const PSUFwInfo& record) {
  return {slot, TextOf(record.name), TextOf(record.identifier), TextOf(record.version),
          TextOf(record.description)};
}

PsuFlags DecodeSlot(std::size_t slot, const PSUStatus& record) {
  return {slot, DecodeFlag("trigger", "not trigger", record.epow),
          DecodeFlag("trigger", "not trigger", record.throttle),
          DecodeFlag("present", "not present", record.present),
          DecodeFlag("power good", "not power good", record.powerGood)};
}

PsuFans UntoldFans(std::size_t slot, Absence absence) {
  const Text text = Absent<std::string>("", absence);
  const Number number = Absent<std::int64_t>("", absence);
  return {slot, text, number, number, number, number, Absent<PsuFanState>("", absence)};
}

PsuFirmware UntoldFirmware(std::size_t slot, Absence absence) {
  const Text text = Absent<std::string>("", absence);
  return {slot, text, text, text, text};
}

PsuFlags UntoldFlags(std::size_t slot, Absence absence) {
  const Flag flag = Absent<bool>("", absence);
  return {slot, flag, flag, flag, flag};
}

template <typename Slot, typename Record>
std::vector<Slot> DecodeSlots(const std::vector<Record>& records, std::size_t slotCount,
                              Absence untold, Slot (*untoldSlot)(std::size_t, Absence)) {
  std::vector<Slot> slots;
  const std::size_t last =
      records.empty() ? slotCount : std::max(slotCount, SlotOf(records.back().name));
  for (std::size_t slot = 1; slot <= last; ++slot) {
    const auto record =
        std::find_if(records.begin(), records.end(),
                     [slot](const Record& candidate) { return SlotOf(candidate.name) == slot; });
    slots.push_back(record == records.end() ? untoldSlot(slot, untold) : DecodeSlot(slot, *record));
  }
  return slots;
}

}  // namespace

Number NumberOf(std::int64_t number) { return Present(number, ""); }

Text TextOf(const std::string& text) { return Present(text, text); }

Value<SMMIype> GenerationOf(SMMIype generation) { return Present(generation, ""); }

PowerReadings DecodePower(const ChassisPowerCon& power) {
  return {DecodeNumber(power.minPower), DecodeNumber(power.avgPower), DecodeNumber(power.maxPower)};
}

PowerCaps DecodeCaps(const ChassisPowerCap& caps) {
  return {DecodeNumber(caps.minCap), DecodeNumber(caps.maxCap), DecodeNumber(caps.protectiveCap),
          DecodeNumber(caps.userCap), DecodeNumber(caps.thermalCap)};
}

NodeState DecodeNode(const NodeStatus& node) {
  return {DecodeState(kPowerStates, node.powerState), DecodeWidth(node.width),
          DecodeNumber(node.height), NumberOf(node.permissionState)};
}

std::vector<PsuFans> DecodeFans(const std::vector<PSUFanSpeed>& records, std::size_t slotCount,
                                Absence untold) {
  return DecodeSlots(records, slotCount, untold, UntoldFans);
}

std::vector<PsuFirmware> DecodeFirmware(const std::vector<PSUFwInfo>& records,
                                        std::size_t slotCount, Absence untold) {
  return DecodeSlots(records, slotCount, untold, UntoldFirmware);
}

std::vector<PsuFlags> DecodeFlags(const std::vector<PSUStatus>& records) {
  std::vector<PsuFlags> slots;
  for (const PSUStatus& record : records) {
    const std::size_t slot = slots.size() + 1;
    slots.push_back(slot > kSlotsWithFlags ? UntoldFlags(slot, Absence::FlagsNotTold)
                                           : DecodeSlot(slot, record));
  }
  return slots;
}

std::vector<PsuFlags> UnreadFlags(std::size_t slotCount) {
  std::vector<PsuFlags> slots;
  while (slots.size() < slotCount) {
    slots.push_back(UntoldFlags(slots.size() + 1, Absence::QueryFailed));
  }
  return slots;
}

}  // namespace Tavrin
