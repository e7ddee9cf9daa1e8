#include "tests/fuzz/RecordChecks.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {
namespace {

bool IsOneOf(const std::string& text, std::initializer_list<const char*> known) {
  return std::find(known.begin(), known.end(), text) != known.end();
}

bool IsLowerCaseHex(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace

bool IsNumber(const std::string& text, std::uint32_t smallest, std::uint32_t largest) {
  constexpr std::size_t kMostDigits = 10;
  if (text.empty() || text.size() > kMostDigits ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  const unsigned long number = std::strtoul(text.c_str(), nullptr, 10);
  return number >= smallest && number <= largest && std::to_string(number) == text;
}

bool IsReading(const std::string& text, std::uint32_t smallest, std::uint32_t largest) {
  return text == "N/A" || IsNumber(text, smallest, largest);
}

bool IsDottedHex(const std::string& text) {
  const std::size_t dot = text.find('.');
  if (dot == std::string::npos) {
    return false;
  }
  const std::string first = text.substr(0, dot);
  const std::string second = text.substr(dot + 1);
  return IsLowerCaseHex(first) && first.size() <= 2 && (first.size() == 1 || first[0] != '0') &&
         IsLowerCaseHex(second) && second.size() == 2;
}

bool IsPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool IsSmmVersion(const std::string& text) {
  const std::size_t dash = text.rfind('-');
  return dash != std::string::npos && IsPrintable(text) && IsDottedHex(text.substr(dash + 1));
}

void CheckChassisPower(const ChassisPowerCon& power) {
  Require(IsNumber(power.minPower, 0, 65535), "the lowest chassis power is a number");
  Require(IsNumber(power.avgPower, 0, 65535), "the average chassis power is a number");
  Require(IsNumber(power.maxPower, 0, 65535), "the highest chassis power is a number");
}

void CheckNodePower(const ChassisPowerCon& power) {
  Require(IsReading(power.minPower, 1, 65534), "the lowest node power is a reading");
  Require(IsReading(power.avgPower, 1, 65534), "the average node power is a reading");
  Require(IsReading(power.maxPower, 1, 65534), "the highest node power is a reading");
}

void CheckPowerCap(const ChassisPowerCap& cap) {
  Require(IsReading(cap.minCap, 1, 65535), "the lower cap is a reading");
  Require(IsReading(cap.maxCap, 1, 65535), "the upper cap is a reading");
  Require(IsReading(cap.protectiveCap, 1, 65535), "the protective cap is a reading");
  Require(IsReading(cap.userCap, 1, 65535), "the user's cap is a reading");
  Require(IsReading(cap.thermalCap, 1, 65535), "the thermal cap is a reading");
}

void CheckFans(const PSUFanSpeed& fans, std::uint64_t slot, bool hasFanB) {
  Require(fans.name == "PSU" + std::to_string(slot), "fans carry the name of their slot");
  Require(IsReading(fans.speedA, 1, 65535), "the speed of fan A is a reading");
  Require(IsReading(fans.patA, 1, 255), "the Pat value of fan A is a reading");
  Require(hasFanB ? IsReading(fans.speedB, 1, 65535) : fans.speedB.empty(),
          "the speed of fan B is a reading, and empty without fan B");
  Require(hasFanB ? IsReading(fans.patB, 1, 255) : fans.patB.empty(),
          "the Pat value of fan B is a reading, and empty without fan B");
  Require(IsOneOf(fans.status, {"Not Present", "Abnormal", "Normal", "Unknown"}),
          "the status of the fans is a known word");
}

void CheckFirmware(const PSUFwInfo& firmware, std::uint64_t slotCount) {
  Require(IsNumber(firmware.slot, 1, static_cast<std::uint32_t>(slotCount)),
          "firmware belongs to a slot that exists");
  Require(firmware.name == "PSU" + firmware.slot, "firmware carries the name of its slot");
  Require(firmware.description == "Power Supply " + firmware.slot, "firmware describes its slot");
  Require(IsDottedHex(firmware.version), "the firmware version is a pair of numbers");
  Require(firmware.identifier.rfind("PSU", 0) == 0 && firmware.identifier.size() >= 11 &&
              IsDottedHex(firmware.identifier.substr(7)),
          "the identifier is PSU, four bytes of manufacturer, and the position");
}

void CheckPsuStatus(const PSUStatus& status) {
  Require(IsOneOf(status.epow, {"trigger", "not trigger"}), "epow is a known word");
  Require(IsOneOf(status.throttle, {"trigger", "not trigger"}), "throttle is a known word");
  Require(IsOneOf(status.present, {"present", "not present"}), "present is a known word");
  Require(IsOneOf(status.powerGood, {"power good", "not power good"}),
          "power good is a known word");
}

void CheckNodeStatus(const NodeStatus& status) {
  Require(IsOneOf(status.powerState,
                  {"Power OFF", "No Permission", "Power Fault", "Power ON", "Fault"}),
          "the power state is a known word");
  Require(IsOneOf(status.width, {"Half", "Full", "N/A", "0"}) || IsNumber(status.width, 3, 254),
          "the width is a known word or a number");
  Require(IsReading(status.height, 0, 254), "the height is a number or N/A");
  Require(status.permissionState >= 0 && status.permissionState <= 255,
          "the permission state is a byte");
}

void CheckSmmStatus(const SMMStatus& status) {
  const bool is253 = status.platformId == 253;
  Require(is253 || status.platformId == 254, "the platform is 253 or 254");
  Require(is253 ? status.psuSlotCount == 6 || status.psuSlotCount == 9 : status.psuSlotCount == 2,
          "the number of PSU slots is one that the platform has");
}

}  // namespace Tavrin::Fuzz
