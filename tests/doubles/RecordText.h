#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin::Double {

/// The members of each record by their names, in the order that they are declared in.
template <typename Record>
inline constexpr std::tuple<> kMembers;
template <>
inline constexpr std::tuple kMembers<ChassisPowerCon> = {
    std::pair{"minPower", &ChassisPowerCon::minPower},
    std::pair{"avgPower", &ChassisPowerCon::avgPower},
    std::pair{"maxPower", &ChassisPowerCon::maxPower}};
template <>
inline constexpr std::tuple kMembers<ChassisPowerCap> = {
    std::pair{"minCap", &ChassisPowerCap::minCap}, std::pair{"maxCap", &ChassisPowerCap::maxCap},
    std::pair{"protectiveCap", &ChassisPowerCap::protectiveCap},
    std::pair{"userCap", &ChassisPowerCap::userCap},
    std::pair{"thermalCap", &ChassisPowerCap::thermalCap}};
template <>
inline constexpr std::tuple kMembers<PSUFanSpeed> = {
    std::pair{"name", &PSUFanSpeed::name}, std::pair{"speedA", &PSUFanSpeed::speedA},
    std::pair{"patA", &PSUFanSpeed::patA}, std::pair{"speedB", &PSUFanSpeed::speedB},
    std::pair{"patB", &PSUFanSpeed::patB}, std::pair{"status", &PSUFanSpeed::status}};
template <>
inline constexpr std::tuple kMembers<PSUFwInfo> = {
    std::pair{"name", &PSUFwInfo::name}, std::pair{"identifier", &PSUFwInfo::identifier},
    std::pair{"version", &PSUFwInfo::version}, std::pair{"slot", &PSUFwInfo::slot},
    std::pair{"description", &PSUFwInfo::description}};
template <>
inline constexpr std::tuple kMembers<PSUStatus> = {
    std::pair{"epow", &PSUStatus::epow}, std::pair{"throttle", &PSUStatus::throttle},
    std::pair{"present", &PSUStatus::present}, std::pair{"powerGood", &PSUStatus::powerGood}};
template <>
inline constexpr std::tuple kMembers<NodeStatus> = {
    std::pair{"powerState", &NodeStatus::powerState}, std::pair{"width", &NodeStatus::width},
    std::pair{"height", &NodeStatus::height},
    std::pair{"permissionState", &NodeStatus::permissionState}};
template <>
inline constexpr std::tuple kMembers<SMMStatus> = {
    std::pair{"platformId", &SMMStatus::platformId},
    std::pair{"psuSlotCount", &SMMStatus::psuSlotCount}};

/// Calls `visit` with the name and the value of each member.
template <typename Record, typename Visit>
void ForEachMember(Record& record, Visit visit) {
  std::apply([&](const auto&... member) { (visit(member.first, record.*member.second), ...); },
             kMembers<std::remove_const_t<Record>>);
}

/// A value as text. Bytes that are not printable ASCII are shown as \xNN.
std::string ValueText(const std::string& value);
inline std::string ValueText(std::int32_t value) { return std::to_string(value); }

/// The name, and the text of the value unless that is empty.
std::string TextLine(const std::string& name, const std::string& value);

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
