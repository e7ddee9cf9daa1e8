// A program outside the repository. It sends nothing, and runs through construction and one query.
#include <iostream>
#include <string>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/SMMInfo.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/logger/LogControl.h"

int main() {
  Tavrin::Standalone::SetGlobalConfigValue("SMM_TYPE", 0);
  Tavrin::TavrinConnection::ConnectionInfo info;
  info.connectionKind = 3;  // Admits no exchange.

  Tavrin::SMMInventory inventory(info);
  std::string machineType = "untouched";
  const int status = inventory.GetSmmMT(machineType);
  std::cout << "status " << status << ", machine type " << machineType << '\n';
  const bool asExpected =
      status == Tavrin::StatusCode::ConnectionKindNotAdmitted && machineType == "untouched";
  return asExpected ? 0 : 1;
}
