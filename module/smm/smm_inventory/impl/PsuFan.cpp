#include "module/smm/smm_inventory/impl/PsuFan.h"

#include "module/smm/smm_inventory/impl/ByteReader.h"
#include "module/smm/smm_inventory/impl/ByteText.h"

namespace Tavrin {
namespace {

std::string StatusText(std::uint8_t status) {
  switch (status) {
    case 0:
      return "Not Present";
    case 1:
      return "Abnormal";
    case 2:
      return "Normal";
    default:
      return "Unknown";
  }
}

}  // namespace

PSUFanSpeed DecodeSecondGenerationFans(const std::string& name,
                                       const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  reader.Skip(1);
  PSUFanSpeed fans;
  fans.name = name;
  fans.speedA = std::to_string(reader.LittleEndian16());
  fans.patA = std::to_string(reader.Byte());
  fans.speedB = std::to_string(reader.LittleEndian16());
  fans.patB = std::to_string(reader.Byte());
  fans.status = StatusText(reader.Byte());
  return fans;
}

PSUFanSpeed DecodeFirstGenerationFan(const std::string& name,
                                     const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  PSUFanSpeed fan;
  fan.name = name;
  fan.speedA = std::to_string(reader.LittleEndian16());
  fan.patA = std::to_string(reader.Byte());
  fan.status = StatusText(reader.Byte());
  return fan;
}

std::string SecondGenerationFansText(const PSUFanSpeed& fans) {
  return "PSU:" + fans.name + ",Speed-A:" + fans.speedA + ",Pat-A:" + fans.patA +
         ",Speed-B:" + fans.speedB + ",Pat-B:" + fans.patB + ",Status:" + fans.status;
}

std::string FirstGenerationFanText(const PSUFanSpeed& fan) {
  return "PSU:" + fan.name + ",Speed:" + fan.speedA + ",Pat:" + fan.patA + ",Status:" + fan.status;
}

PSUFanSpeed WithoutAbsentFans(PSUFanSpeed fans) {
  ReplaceZero(fans.speedA);
  ReplaceZero(fans.patA);
  ReplaceZero(fans.speedB);
  ReplaceZero(fans.patB);
  return fans;
}

}  // namespace Tavrin
