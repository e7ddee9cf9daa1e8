#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin::Double {

// A member by its name and its type, which callers were compiled with.
#define TEXT_IN(RECORD, MEMBER) \
  std::pair<const char*, std::string RECORD::*> { #MEMBER, &RECORD::MEMBER }
#define NUMBER_IN(RECORD, MEMBER) \
  std::pair<const char*, std::int32_t RECORD::*> { #MEMBER, &RECORD::MEMBER }

/// The members of each record, in the order that they are declared in.
template <typename Record>
inline constexpr std::tuple<> kMembers;
template <>
inline constexpr std::tuple kMembers<ChassisPowerCon> = {TEXT_IN(ChassisPowerCon, minPower),
                                                         TEXT_IN(ChassisPowerCon, avgPower),
                                                         TEXT_IN(ChassisPowerCon, maxPower)};
template <>
inline constexpr std::tuple kMembers<ChassisPowerCap> = {
    TEXT_IN(ChassisPowerCap, minCap), TEXT_IN(ChassisPowerCap, maxCap),
    TEXT_IN(ChassisPowerCap, protectiveCap), TEXT_IN(ChassisPowerCap, userCap),
    TEXT_IN(ChassisPowerCap, thermalCap)};
template <>
inline constexpr std::tuple kMembers<PSUFanSpeed> = {
    TEXT_IN(PSUFanSpeed, name),   TEXT_IN(PSUFanSpeed, speedA), TEXT_IN(PSUFanSpeed, patA),
    TEXT_IN(PSUFanSpeed, speedB), TEXT_IN(PSUFanSpeed, patB),   TEXT_IN(PSUFanSpeed, status)};
template <>
inline constexpr std::tuple kMembers<PSUFwInfo> = {
    TEXT_IN(PSUFwInfo, name), TEXT_IN(PSUFwInfo, identifier), TEXT_IN(PSUFwInfo, version),
    TEXT_IN(PSUFwInfo, slot), TEXT_IN(PSUFwInfo, description)};
template <>
inline constexpr std::tuple kMembers<PSUStatus> = {
    TEXT_IN(PSUStatus, epow), TEXT_IN(PSUStatus, throttle), TEXT_IN(PSUStatus, present),
    TEXT_IN(PSUStatus, powerGood)};
template <>
inline constexpr std::tuple kMembers<NodeStatus> = {
    TEXT_IN(NodeStatus, powerState), TEXT_IN(NodeStatus, width), TEXT_IN(NodeStatus, height),
    NUMBER_IN(NodeStatus, permissionState)};
template <>
inline constexpr std::tuple kMembers<SMMStatus> = {NUMBER_IN(SMMStatus, platformId),
                                                   NUMBER_IN(SMMStatus, psuSlotCount)};

#undef TEXT_IN
#undef NUMBER_IN

/// Calls `visit` with the name and the value of each member.
template <typename Record, typename Visit>
void ForEachMember(Record& record, Visit visit) {
  std::apply([&](const auto&... member) { (visit(member.first, record.*member.second), ...); },
             kMembers<std::remove_const_t<Record>>);
}

/// A value as text. Bytes that are not printable ASCII are shown as \xNN.
inline std::string ValueText(const std::string& value) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text;
  for (const char character : value) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= ' ' && byte <= '~') {
      text += character;
    } else {
      text += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
    }
  }
  return text;
}
inline std::string ValueText(std::int32_t value) { return std::to_string(value); }

/// The name, and the text of the value unless that is empty.
inline std::string TextLine(const std::string& name, const std::string& value) {
  return name + (value.empty() ? "" : " ") + value + '\n';
}

/// A record as one line a member.
template <typename Record>
std::string Text(const Record& record) {
  std::string text;
  ForEachMember(record, [&](const char* name, const auto& value) {
    text += TextLine(name, ValueText(value));
  });
  return text;
}

inline std::string Text(const std::string& text) { return TextLine("text", ValueText(text)); }

/// The records one after the other.
template <typename Record>
std::string Text(const std::vector<Record>& records) {
  std::string text;
  for (const Record& record : records) {
    text += Text(record);
  }
  return text;
}

}  // namespace Tavrin::Double
