#include "module/smm/smm_inventory/SMMInventory.h"

#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"

namespace Tavrin {

SMMInventory::SMMInventory(const TavrinConnection::ConnectionInfo& info)
    : implementation_(new SMMInventoryImpl(info)) {}

int SMMInventory::GetSmmMT(std::string& machineType) {
  return implementation_->GetSmmMT(machineType);
}

int SMMInventory::GetSmmSN(std::string& serialNumber) {
  return implementation_->GetSmmSN(serialNumber);
}

int SMMInventory::GetSmmVersion(std::string& version) {
  return implementation_->GetSmmVersion(version);
}

int SMMInventory::GetSmmName(std::string& name) { return implementation_->GetSmmName(name); }

int SMMInventory::GetChassisPowerConsumption(ChassisPowerCon& power) {
  return implementation_->GetChassisPowerConsumption(power);
}

int SMMInventory::GetChassisPowerCap(ChassisPowerCap& cap) {
  return implementation_->GetChassisPowerCap(cap);
}

int SMMInventory::GetNodePowerConsumption(unsigned long node, ChassisPowerCon& power) {
  return implementation_->GetNodePowerConsumption(node, power);
}

int SMMInventory::GetPSUFanSpeed(std::vector<PSUFanSpeed>& fans) {
  return implementation_->GetPSUFanSpeed(fans);
}

int SMMInventory::GetPSUFwInfo(std::vector<PSUFwInfo>& firmware) {
  return implementation_->GetPSUFwInfo(firmware);
}

int SMMInventory::GetPSUStatus(std::vector<PSUStatus>& psus) {
  return implementation_->GetPSUStatus(psus);
}

int SMMInventory::SelectPSU(int psu) { return implementation_->SelectPSUImpl(psu); }

int SMMInventory::GetNodeStatus(unsigned long node, NodeStatus& status) {
  return implementation_->GetNodeStatus(node, status);
}

int SMMInventory::GetSMMStatus(SMMStatus& status) {
  return implementation_->GetSMMStatusImp(status);
}

unsigned long SMMInventory::GetNodeNub() { return implementation_->nodeCount; }

}  // namespace Tavrin
