#include "tests/reading/InventoryDouble.h"

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/IpmiClient.h"

namespace Tavrin {

InventoryScript& TheScript() {
  thread_local InventoryScript script;
  return script;
}

class SMMInventoryImpl {};

SMMInventory::SMMInventory(const TavrinConnection::ConnectionInfo& info) {
  TheScript().asked.emplace_back("construction");
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

int SMMInventory::GetSmmVersion(std::string& version) {
  TheScript().asked.emplace_back("firmware version");
  return TheScript().firmwareVersion(version);
}

int SMMInventory::GetSmmName(std::string& name) {
  TheScript().asked.emplace_back("name");
  return TheScript().name(name);
}

int SMMInventory::GetChassisPowerConsumption(ChassisPowerCon& power) {
  TheScript().asked.emplace_back("chassis power");
  return TheScript().chassisPower(power);
}

int SMMInventory::GetChassisPowerCap(ChassisPowerCap& cap) {
  TheScript().asked.emplace_back("power caps");
  return TheScript().powerCaps(cap);
}

int SMMInventory::GetNodePowerConsumption(unsigned long node, ChassisPowerCon& power) {
  TheScript().asked.push_back("power of node " + std::to_string(node));
  return TheScript().nodePower(node, power);
}

int SMMInventory::GetNodeStatus(unsigned long node, NodeStatus& status) {
  TheScript().asked.push_back("status of node " + std::to_string(node));
  return TheScript().nodeStatus(node, status);
}

int SMMInventory::GetPSUFanSpeed(std::vector<PSUFanSpeed>& fans) {
  TheScript().asked.emplace_back("fans");
  return TheScript().fans(fans);
}

int SMMInventory::GetPSUFwInfo(std::vector<PSUFwInfo>& firmware) {
  TheScript().asked.emplace_back("firmware");
  return TheScript().firmware(firmware);
}

int SMMInventory::GetPSUStatus(std::vector<PSUStatus>& status) {
  TheScript().asked.emplace_back("PSU status");
  return TheScript().psuStatus(status);
}

int SMMInventory::SelectPSU(int psu) {
  TheScript().asked.push_back("selection of PSU " + std::to_string(psu));
  return TheScript().selectPsu(psu);
}

unsigned long SMMInventory::GetNodeNub() { return TheScript().nodeCount; }

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& /*info*/) {}

SMMInfo::~SMMInfo() = default;

int SMMInfo::GetSmmType(SMMIype& type) {
  TheScript().asked.emplace_back("generation");
  return TheScript().generation(type);
}

Standalone::DetectionOutcome Standalone::GetLastDetectionOutcome() { return TheScript().detection; }

const std::vector<std::uint8_t>& Standalone::GetLastDetectionAnswer() {
  return TheScript().statusAnswer;
}

struct IpmiClient::State {};

IpmiClient::IpmiClient(const std::string& /*address*/, const std::string& /*userName*/,
                       const std::string& /*password*/, const std::string& port,
                       unsigned long cipherSuite) {
  TheScript().asked.push_back("client for port " + port + ", cipher suite " +
                              std::to_string(cipherSuite));
}

IpmiClient::~IpmiClient() = default;

int IpmiClient::connect() {
  TheScript().asked.emplace_back("connection");
  return TheScript().connect();
}

int IpmiClient::disconnect() {
  TheScript().asked.emplace_back("end of the connection");
  return 0;
}

const Standalone::LastExchange& Standalone::GetLastExchange() { return TheScript().exchange; }

}  // namespace Tavrin
