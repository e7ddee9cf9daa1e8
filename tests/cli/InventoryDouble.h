#pragma once

#include <functional>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"
#include "platform/SMMInfo.h"

namespace Tavrin {

/// What the facade and the detection of the generation do in a test, and what was asked of them.
/// Without a change by the test, every query succeeds and leaves its argument empty.
struct InventoryScript {
  std::function<void()> construct = [] {};
  std::function<int(std::string&)> machineType = [](std::string&) { return 0; };
  std::function<int(std::string&)> serialNumber = [](std::string&) { return 0; };
  std::function<int(std::string&)> firmwareVersion = [](std::string&) { return 0; };
  std::function<int(std::string&)> name = [](std::string&) { return 0; };
  std::function<int(ChassisPowerCon&)> chassisPower = [](ChassisPowerCon&) { return 0; };
  std::function<int(ChassisPowerCap&)> powerCaps = [](ChassisPowerCap&) { return 0; };
  std::function<int(unsigned long, ChassisPowerCon&)> nodePower =
      [](unsigned long, ChassisPowerCon&) { return 0; };
  std::function<int(unsigned long, NodeStatus&)> nodeStatus = [](unsigned long, NodeStatus&) {
    return 0;
  };
  std::function<int(std::vector<PSUFanSpeed>&)> fans = [](std::vector<PSUFanSpeed>&) { return 0; };
  std::function<int(std::vector<PSUFwInfo>&)> firmware = [](std::vector<PSUFwInfo>&) { return 0; };
  std::function<int(std::vector<PSUStatus>&)> psuStatus = [](std::vector<PSUStatus>&) { return 0; };
  std::function<int(int)> selectPsu = [](int) { return 0; };
  std::function<int(SMMIype&)> generation = [](SMMIype&) { return 0; };
  unsigned long nodeCount = 4;

  std::vector<std::string> asked;
  std::string password;  ///< As the facade got it.
};

/// The script of the test that runs.
InventoryScript& TheScript();

}  // namespace Tavrin
