#include "module/smm/smm_inventory/impl/PsuFirmware.h"

#include "module/smm/smm_inventory/impl/ByteReader.h"
#include "module/smm/smm_inventory/impl/ByteText.h"

namespace Tavrin {
namespace {

constexpr std::size_t kManufacturerLength = 4;

}  // namespace

std::string DecodePsuVersion(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  const std::uint8_t minor = reader.Byte();
  const std::uint8_t major = reader.Byte();
  return DottedHex(major, minor);
}

std::string DecodePsuPosition(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  const std::uint8_t first = reader.Byte();
  const std::uint8_t second = reader.Byte();
  return DottedHex(first, second);
}

std::string DecodeFirstGenerationPsuManufacturer(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  reader.Skip(1);
  return reader.Characters(kManufacturerLength);
}

std::string DecodeSecondGenerationPsuManufacturer(const std::vector<std::uint8_t>& answer) {
  return ByteReader(answer).Characters(kManufacturerLength);
}

PSUFwInfo ToPsuFwInfo(int slot, const std::string& version, const std::string& manufacturer,
                      const std::string& position) {
  PSUFwInfo info;
  info.slot = std::to_string(slot);
  info.name = "PSU" + info.slot;
  info.version = version;
  info.description = "Power Supply " + info.slot;
  info.identifier = "PSU" + manufacturer + position;
  return info;
}

std::string PsuFwInfoText(const PSUFwInfo& info) {
  return info.description + " " + info.name + " " + info.slot + " " + info.version + " " +
         info.identifier;
}

}  // namespace Tavrin
