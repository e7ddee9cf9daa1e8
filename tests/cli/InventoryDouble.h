#pragma once

#include <functional>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"
#include "platform/SMMInfo.h"

namespace Tavrin {

/// What the facade and the detection of the generation do in a test, and what was asked of them.
struct InventoryScript {
  std::function<void()> construct = [] {};
  std::function<int(std::string&)> machineType;
  std::function<int(std::string&)> serialNumber;
  std::function<int(SMMStatus&)> status;
  std::function<int(SMMIype&)> generation;
  unsigned long nodeCount = 4;

  std::vector<std::string> asked;
  std::string password;  ///< As the facade got it.
};

/// The script of the test that runs.
InventoryScript& TheScript();

}  // namespace Tavrin
