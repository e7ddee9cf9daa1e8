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

int SMMInventory::GetSMMStatus(SMMStatus& status) {
  return implementation_->GetSMMStatusImp(status);
}

unsigned long SMMInventory::GetNodeNub() { return implementation_->nodeCount; }

}  // namespace Tavrin
