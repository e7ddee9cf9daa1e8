#include "module/smm/smm_inventory/impl/NodeStatus.h"

#include "module/smm/smm_inventory/impl/ByteReader.h"

namespace Tavrin {
namespace {

constexpr const char* kUnknownPowerState = "Fault";
constexpr std::uint8_t kNotApplicable = 255;

std::string PowerStateText(std::uint8_t powerState) {
  switch (powerState) {
    case 0x00:
      return "Power OFF";
    case 0x20:
      return "No Permission";
    case 0x40:
      return "Power Fault";
    case 0x80:
      return "Power ON";
    default:
      return kUnknownPowerState;
  }
}

std::string WidthText(std::uint8_t width) {
  switch (width) {
    case 1:
      return "Half";
    case 2:
      return "Full";
    case kNotApplicable:
      return "N/A";
    default:
      return std::to_string(width);
  }
}

std::string HeightText(std::uint8_t height) {
  if (height == kNotApplicable) {
    return "N/A";
  }
  return std::to_string(height);
}

}  // namespace

NodeStatusCodes DecodeNodeStatus(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  NodeStatusCodes codes;
  codes.powerState = reader.Byte();
  codes.width = reader.Byte();
  codes.height = reader.Byte();
  codes.permissionState = reader.Byte();
  return codes;
}

std::string NodeStatusCodesText(const NodeStatusCodes& codes) {
  return "\nNode Power State " + std::to_string(codes.powerState) + "\nWidth " +
         std::to_string(codes.width) + "\nHeight " + std::to_string(codes.height) +
         "\nPermission state " + std::to_string(codes.permissionState);
}

bool IsKnownPowerState(std::uint8_t powerState) {
  return PowerStateText(powerState) != kUnknownPowerState;
}

NodeStatus ToNodeStatus(const NodeStatusCodes& codes) {
  NodeStatus status;
  status.powerState = PowerStateText(codes.powerState);
  status.width = WidthText(codes.width);
  status.height = HeightText(codes.height);
  status.permissionState = codes.permissionState;
  return status;
}

}  // namespace Tavrin
