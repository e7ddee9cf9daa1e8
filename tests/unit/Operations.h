#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"

namespace Tavrin::Double {

/// Calls an operation with a fresh output, and returns its status and what its output held
/// afterwards as text. The number is the node or the PSU, where the operation has one.
using Operation = std::function<std::string(SMMInventoryImpl&, std::int16_t)>;

/// The operations of SMMInventory that send, by their names there.
const std::map<std::string, Operation>& Operations();

}  // namespace Tavrin::Double
