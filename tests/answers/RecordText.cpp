#include "tests/answers/RecordText.h"

namespace Tavrin::Answers {
namespace {

std::string Line(const std::string& name, const std::string& value) {
  constexpr const char* digits = "0123456789abcdef";
  std::string line = name;
  line += value.empty() ? "" : " ";
  for (const char character : value) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= ' ' && byte <= '~') {
      line += character;
    } else {
      line += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
    }
  }
  return line + '\n';
}

}  // namespace

std::string Text(const std::string& text) { return Line("text", text); }

std::string Text(const ChassisPowerCon& power) {
  return Line("minPower", power.minPower) + Line("avgPower", power.avgPower) +
         Line("maxPower", power.maxPower);
}

std::string Text(const ChassisPowerCap& cap) {
  return Line("minCap", cap.minCap) + Line("maxCap", cap.maxCap) +
         Line("protectiveCap", cap.protectiveCap) + Line("userCap", cap.userCap) +
         Line("thermalCap", cap.thermalCap);
}

std::string Text(const PSUFanSpeed& fans) {
  return Line("name", fans.name) + Line("speedA", fans.speedA) + Line("patA", fans.patA) +
         Line("speedB", fans.speedB) + Line("patB", fans.patB) + Line("status", fans.status);
}

std::string Text(const PSUFwInfo& firmware) {
  return Line("name", firmware.name) + Line("identifier", firmware.identifier) +
         Line("version", firmware.version) + Line("slot", firmware.slot) +
         Line("description", firmware.description);
}

std::string Text(const PSUStatus& status) {
  return Line("epow", status.epow) + Line("throttle", status.throttle) +
         Line("present", status.present) + Line("powerGood", status.powerGood);
}

std::string Text(const NodeStatus& status) {
  return Line("powerState", status.powerState) + Line("width", status.width) +
         Line("height", status.height) +
         Line("permissionState", std::to_string(status.permissionState));
}

std::string Text(const SMMStatus& status) {
  return Line("platformId", std::to_string(status.platformId)) +
         Line("psuSlotCount", std::to_string(status.psuSlotCount));
}

}  // namespace Tavrin::Answers
