#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin {

/// Decoders of the node status answer.

constexpr std::size_t kNodeStatusLength = 4;

/// The codes of the answer, in its order.
struct NodeStatusCodes {
  std::uint8_t powerState = 0;
  std::uint8_t width = 0;
  std::uint8_t height = 0;
  std::uint8_t permissionState = 0;
};

NodeStatusCodes DecodeNodeStatus(const std::vector<std::uint8_t>& answer);

/// The rows that show the codes in decimal.
std::string NodeStatusCodesText(const NodeStatusCodes& codes);

/// Whether the code has a text of its own; "Fault" stands for all others.
bool IsKnownPowerState(std::uint8_t powerState);

/// The codes as texts.
NodeStatus ToNodeStatus(const NodeStatusCodes& codes);

}  // namespace Tavrin
