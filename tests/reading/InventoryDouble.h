#pragma once

#include <functional>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"
#include "platform/SMMInfo.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"

namespace Tavrin {

/// What the facade, the detection of the generation and the IPMI client do in a test, and what was
/// asked of them. Without a change by the test, every query succeeds and leaves its argument empty.
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
  std::function<int()> connect = [] { return 0; };
  unsigned long nodeCount = 4;

  /// What the client and the detection tell afterwards.
  Standalone::LastExchange exchange;
  Standalone::DetectionOutcome detection = Standalone::DetectionOutcome::Detected;
  std::vector<std::uint8_t> statusAnswer = std::vector<std::uint8_t>(14);

  std::vector<std::string> asked;
  std::string password;  ///< As the facade got it.
};

/// The calling thread's script: threads stand for different SMMs.
InventoryScript& TheScript();

}  // namespace Tavrin
