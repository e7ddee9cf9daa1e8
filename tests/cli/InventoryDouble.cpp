#include "tests/cli/InventoryDouble.h"

#include "module/smm/smm_inventory/SMMInventory.h"

namespace Tavrin {

InventoryScript& TheScript() {
  static InventoryScript script;
  return script;
}

class SMMInventoryImpl {};

SMMInventory::SMMInventory(const TavrinConnection::ConnectionInfo& info) {
  TheScript().password = info.password;
  TheScript().construct();
}

int SMMInventory::GetSmmMT(std::string& machineType) {
  TheScript().asked.emplace_back("machine type");
  return TheScript().machineType(machineType);
}

int SMMInventory::GetSmmSN(std::string& serialNumber) {
  TheScript().asked.emplace_back("serial number");
  return TheScript().serialNumber(serialNumber);
}

int SMMInventory::GetSMMStatus(SMMStatus& status) {
  TheScript().asked.emplace_back("status");
  return TheScript().status(status);
}

unsigned long SMMInventory::GetNodeNub() { return TheScript().nodeCount; }

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& /*info*/) {}

SMMInfo::~SMMInfo() = default;

int SMMInfo::GetSmmType(SMMIype& type) {
  TheScript().asked.emplace_back("generation");
  return TheScript().generation(type);
}

}  // namespace Tavrin
