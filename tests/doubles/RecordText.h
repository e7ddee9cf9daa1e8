#pragma once

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin::Double {

/// A member by its name and its type, which callers were compiled with.
template <typename Record>
using TextIn = std::pair<const char*, std::string Record::*>;
template <typename Record>
using NumberIn = std::pair<const char*, std::int32_t Record::*>;

/// The members of each record, in the order that they are declared in.
template <typename Record>
inline constexpr std::tuple<> kMembers;
template <>
inline constexpr std::tuple kMembers<ChassisPowerCon> = {
    TextIn<ChassisPowerCon>{"minPower", &ChassisPowerCon::minPower},
    TextIn<ChassisPowerCon>{"avgPower", &ChassisPowerCon::avgPower},
    TextIn<ChassisPowerCon>{"maxPower", &ChassisPowerCon::maxPower}};
template <>
inline constexpr std::tuple kMembers<ChassisPowerCap> = {
    TextIn<ChassisPowerCap>{"minCap", &ChassisPowerCap::minCap},
    TextIn<ChassisPowerCap>{"maxCap", &ChassisPowerCap::maxCap},
    TextIn<ChassisPowerCap>{"protectiveCap", &ChassisPowerCap::protectiveCap},
    TextIn<ChassisPowerCap>{"userCap", &ChassisPowerCap::userCap},
    TextIn<ChassisPowerCap>{"thermalCap", &ChassisPowerCap::thermalCap}};
template <>
inline constexpr std::tuple kMembers<PSUFanSpeed> = {
    TextIn<PSUFanSpeed>{"name", &PSUFanSpeed::name},
    TextIn<PSUFanSpeed>{"speedA", &PSUFanSpeed::speedA},
    TextIn<PSUFanSpeed>{"patA", &PSUFanSpeed::patA},
    TextIn<PSUFanSpeed>{"speedB", &PSUFanSpeed::speedB},
    TextIn<PSUFanSpeed>{"patB", &PSUFanSpeed::patB},
    TextIn<PSUFanSpeed>{"status", &PSUFanSpeed::status}};
template <>
inline constexpr std::tuple kMembers<PSUFwInfo> = {
    TextIn<PSUFwInfo>{"name", &PSUFwInfo::name},
    TextIn<PSUFwInfo>{"identifier", &PSUFwInfo::identifier},
    TextIn<PSUFwInfo>{"version", &PSUFwInfo::version}, TextIn<PSUFwInfo>{"slot", &PSUFwInfo::slot},
    TextIn<PSUFwInfo>{"description", &PSUFwInfo::description}};
template <>
inline constexpr std::tuple kMembers<PSUStatus> = {
    TextIn<PSUStatus>{"epow", &PSUStatus::epow},
    TextIn<PSUStatus>{"throttle", &PSUStatus::throttle},
    TextIn<PSUStatus>{"present", &PSUStatus::present},
    TextIn<PSUStatus>{"powerGood", &PSUStatus::powerGood}};
template <>
inline constexpr std::tuple kMembers<NodeStatus> = {
    TextIn<NodeStatus>{"powerState", &NodeStatus::powerState},
    TextIn<NodeStatus>{"width", &NodeStatus::width},
    TextIn<NodeStatus>{"height", &NodeStatus::height},
    NumberIn<NodeStatus>{"permissionState", &NodeStatus::permissionState}};
template <>
inline constexpr std::tuple kMembers<SMMStatus> = {
    NumberIn<SMMStatus>{"platformId", &SMMStatus::platformId},
    NumberIn<SMMStatus>{"psuSlotCount", &SMMStatus::psuSlotCount}};

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
