#include "benchmarks/support/WholeInventory.h"

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "benchmarks/support/Gate.h"
#include "module/smm/smm_inventory/SMMInventory.h"

namespace Tavrin {
namespace {

constexpr unsigned long kNodes = 12;
constexpr std::size_t kPsus = 9;

void Require(bool holds, const char* query) {
  if (!holds) {
    throw std::runtime_error(std::string(query) + " did not give what the enclosure has");
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

void QueryAll(SMMInventory& inventory) {
  QueryIdentity(inventory);
  QueryPower(inventory);
  QueryNodes(inventory);
  QueryPsus(inventory);
  SMMStatus status;
  Require(inventory.GetSMMStatus(status) == StatusCode::Success, "GetSMMStatus");
}

}  // namespace

void ReadWholeInventory(const TavrinConnection::ConnectionInfo& settings) {
  SMMInventory inventory(settings);
  QueryAll(inventory);
}

Reading ReadAtOnce(const std::vector<TavrinConnection::ConnectionInfo>& enclosures) {
  const std::size_t count = enclosures.size();
  Gate start;
  Gate end;
  std::vector<std::exception_ptr> failures(count);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.Pass();
      std::unique_ptr<SMMInventory> inventory;
      try {
        inventory = std::make_unique<SMMInventory>(enclosures[i]);
        QueryAll(*inventory);
      } catch (...) {
        failures[i] = std::current_exception();
      }
      end.Pass();
    });
  }
  start.WaitFor(count);
  const Meter meter;
  start.Open();
  end.WaitFor(count);
  const Reading reading = {meter.Read(), ResidentKib()};
  end.Open();
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const std::exception_ptr& failure : failures) {
    if (failure) {
      std::rethrow_exception(failure);
    }
  }
  return reading;
}

}  // namespace Tavrin
