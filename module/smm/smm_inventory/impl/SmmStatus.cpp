#include "module/smm/smm_inventory/impl/SmmStatus.h"

#include "module/smm/smm_inventory/impl/ByteReader.h"

namespace Tavrin {
namespace {

constexpr std::uint8_t kNinePsuType = 0x03;
constexpr std::uint8_t kEgsType = 0x04;

}  // namespace

SmmStatusAnswer DecodeSmmStatus(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  SmmStatusAnswer decoded{};
  decoded.platformId = reader.Byte();
  reader.Skip(12);
  decoded.enclosureType = reader.Byte();
  return decoded;
}

bool IsEgs(const SmmStatusAnswer& answer) {
  return answer.platformId == kPlatform253 && answer.enclosureType == kEgsType;
}

SMMStatus ToSmmStatus(const SmmStatusAnswer& answer) {
  SMMStatus status;
  if (answer.platformId == kPlatform253) {
    status.platformId = kPlatform253;
    status.psuSlotCount = answer.enclosureType == kNinePsuType ? 9 : 6;
  } else {
    status.platformId = kPlatform254;
    status.psuSlotCount = kDefaultPsuSlotCount;
  }
  return status;
}

std::uint64_t NodeCountOf(std::int32_t platformId) {
  return platformId == kPlatform253 ? 12 : kDefaultNodeCount;
}

}  // namespace Tavrin
