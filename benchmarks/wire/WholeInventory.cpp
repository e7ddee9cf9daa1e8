#include "benchmarks/wire/WholeInventory.h"

#include <atomic>
#include <stdexcept>
#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"

namespace {

std::atomic<unsigned int> pausedSeconds{0};

}  // namespace

/// Takes the place of the C library's.
extern "C" unsigned int sleep(unsigned int seconds) {
  pausedSeconds += seconds;
  return 0;
}

namespace Tavrin {
namespace {

constexpr unsigned long kNodes = 12;
constexpr std::size_t kPsus = 9;

void Require(bool holds, const char* query) {
  if (!holds) {
    throw std::runtime_error(std::string(query) + " did not give what the simulator has");
  }
}

void QueryIdentity(SMMInventory& inventory) {
  std::string text;
  Require(inventory.GetSmmMT(text) == StatusCode::Success, "GetSmmMT");
  Require(inventory.GetSmmSN(text) == StatusCode::Success, "GetSmmSN");
  Require(inventory.GetSmmVersion(text) == StatusCode::Success, "GetSmmVersion");
  Require(inventory.GetSmmName(text) == StatusCode::Success, "GetSmmName");
}

void QueryPower(SMMInventory& inventory) {
  ChassisPowerCon power;
  ChassisPowerCap cap;
  Require(inventory.GetChassisPowerConsumption(power) == StatusCode::Success,
          "GetChassisPowerConsumption");
  Require(inventory.GetChassisPowerCap(cap) == StatusCode::Success, "GetChassisPowerCap");
}

void QueryNodes(SMMInventory& inventory) {
  Require(inventory.GetNodeNub() == kNodes, "GetNodeNub");
  for (unsigned long node = 1; node <= kNodes; ++node) {
    NodeStatus status;
    ChassisPowerCon power;
    Require(inventory.GetNodeStatus(node, status) == StatusCode::Success, "GetNodeStatus");
    Require(inventory.GetNodePowerConsumption(node, power) == StatusCode::Success,
            "GetNodePowerConsumption");
  }
}

void QueryPsus(SMMInventory& inventory) {
  std::vector<PSUFanSpeed> fans;
  std::vector<PSUFwInfo> firmware;
  std::vector<PSUStatus> psus;
  Require(inventory.GetPSUFanSpeed(fans) == StatusCode::Success && fans.size() == kPsus,
          "GetPSUFanSpeed");
  Require(inventory.GetPSUFwInfo(firmware) == StatusCode::Success && firmware.size() == kPsus,
          "GetPSUFwInfo");
  Require(inventory.GetPSUStatus(psus) == StatusCode::Success && psus.size() == kPsus,
          "GetPSUStatus");
}

}  // namespace

TavrinConnection::ConnectionInfo SettingsFor(std::uint16_t port, const std::string& password) {
  TavrinConnection::ConnectionInfo settings;
  settings.address = "127.0.0.1";
  settings.port = port;
  settings.userName = "admin";
  settings.password = password;
  settings.connectionKind = 7;
  return settings;
}

void ConfigureForSimulator() { Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16); }

void QueryAll(SMMInventory& inventory) {
  QueryIdentity(inventory);
  QueryPower(inventory);
  QueryNodes(inventory);
  QueryPsus(inventory);
  SMMStatus status;
  Require(inventory.GetSMMStatus(status) == StatusCode::Success, "GetSMMStatus");
}

void ReadWholeInventory(const TavrinConnection::ConnectionInfo& settings) {
  SMMInventory inventory(settings);
  QueryAll(inventory);
}

unsigned int PausedSeconds() { return pausedSeconds; }

}  // namespace Tavrin
