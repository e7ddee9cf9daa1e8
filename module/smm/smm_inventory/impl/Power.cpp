#include "module/smm/smm_inventory/impl/Power.h"

#include "module/smm/smm_inventory/impl/ByteReader.h"
#include "module/smm/smm_inventory/impl/ByteText.h"

namespace Tavrin {
namespace {

void ReplaceAbsent(std::string& reading) {
  if (reading == "65535") {
    reading = "N/A";
  }
  ReplaceZero(reading);
}

}  // namespace

ChassisPowerCon DecodePower(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  ChassisPowerCon power;
  power.minPower = std::to_string(reader.LittleEndian16());
  power.avgPower = std::to_string(reader.LittleEndian16());
  power.maxPower = std::to_string(reader.LittleEndian16());
  return power;
}

std::string PowerText(const ChassisPowerCon& power) {
  return "Min:" + power.minPower + ",Avg:" + power.avgPower + ",Max:" + power.maxPower;
}

ChassisPowerCon WithoutAbsentReadings(ChassisPowerCon power) {
  ReplaceAbsent(power.minPower);
  ReplaceAbsent(power.avgPower);
  ReplaceAbsent(power.maxPower);
  return power;
}

ChassisPowerCap DecodePowerCap(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  ChassisPowerCap cap;
  cap.minCap = std::to_string(reader.LittleEndian16());
  cap.maxCap = std::to_string(reader.LittleEndian16());
  cap.protectiveCap = std::to_string(reader.LittleEndian16());
  cap.userCap = std::to_string(reader.LittleEndian16());
  cap.thermalCap = std::to_string(reader.LittleEndian16());
  return cap;
}

std::string PowerCapText(const ChassisPowerCap& cap) {
  return "Min:" + cap.minCap + ",Max:" + cap.maxCap + ",ProtectiveCap:" + cap.protectiveCap +
         ",UserCap:" + cap.userCap + ",ThermalCap:" + cap.thermalCap;
}

ChassisPowerCap WithoutAbsentCaps(ChassisPowerCap cap) {
  ReplaceZero(cap.minCap);
  ReplaceZero(cap.maxCap);
  ReplaceZero(cap.protectiveCap);
  ReplaceZero(cap.userCap);
  ReplaceZero(cap.thermalCap);
  return cap;
}

}  // namespace Tavrin
