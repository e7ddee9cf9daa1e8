#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/IpmiClient.h"
#include "simulator/Enclosure.h"
#include "simulator/Scenario.h"
#include "tests/wire/WireTest.h"

// Each value that the library returns beside the model that the simulator was given. The expected
// texts are made from the model here, without the library's decoders and the simulator's encoders.

namespace Tavrin {
namespace {

using Simulator::Enclosure;
using Simulator::EnclosureKind;
using Simulator::Node;
using Simulator::Psu;
using Texts = std::vector<std::string>;
using Rows = std::vector<Texts>;

struct Kind {
  const char* name;
  EnclosureKind kind;
  int platformId;  ///< As the library counts it.
  Texts options;
};

std::ostream& operator<<(std::ostream& stream, const Kind& kind) { return stream << kind.name; }

const std::array<Kind, 3>& Kinds() {
  static const std::array<Kind, 3> kinds = {
      {{"FirstGeneration", EnclosureKind::FirstGeneration, 254, {"--generation", "1"}},
       {"SecondGeneration253",
        EnclosureKind::SecondGeneration253,
        253,
        {"--generation", "2", "--platform", "253"}},
       {"SecondGeneration254",
        EnclosureKind::SecondGeneration254,
        254,
        {"--generation", "2", "--platform", "254"}}}};
  return kinds;
}

/// The names of all ready scenarios, so that none is forgotten.
Texts ReadyScenarios() {
  Texts names;
  for (const auto& entry : std::filesystem::directory_iterator(SMM_SCENARIOS)) {
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ScenarioText(const std::string& name) {
  std::ifstream file(std::string(SMM_SCENARIOS) + "/" + name + ".json");
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string OrNotAvailable(unsigned int reading) {
  return reading == 0 ? "N/A" : std::to_string(reading);
}

std::string NodeReading(unsigned int reading) {
  return reading == 65535 ? "N/A" : OrNotAvailable(reading);
}

/// Two bytes in hexadecimal with a full stop between them.
std::string Dotted(unsigned int first, unsigned int second) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%x.%02x", first, second);
  return text.data();
}

std::string PowerStateText(std::uint8_t code) {
  switch (code) {
    case 0x00:
      return "Power OFF";
    case 0x20:
      return "No Permission";
    case 0x40:
      return "Power Fault";
    case 0x80:
      return "Power ON";
    default:
      return "Fault";
  }
}

std::string HeightText(unsigned int code) { return code == 255 ? "N/A" : std::to_string(code); }

std::string WidthText(unsigned int code) {
  return code == 1 ? "Half" : code == 2 ? "Full" : HeightText(code);
}

std::string FanStatusText(std::uint8_t code) {
  static const Texts texts = {"Not Present", "Abnormal", "Normal"};
  return code < texts.size() ? texts[code] : "Unknown";
}

Rows ExpectedNodePower(const Enclosure& model) {
  Rows rows;
  for (const Node& node : model.nodes) {
    rows.push_back({NodeReading(node.power.minimum), NodeReading(node.power.average),
                    NodeReading(node.power.maximum)});
  }
  return rows;
}

Rows ExpectedNodeStatus(const Enclosure& model) {
  Rows rows;
  for (const Node& node : model.nodes) {
    rows.push_back({PowerStateText(node.powerState), WidthText(node.width), HeightText(node.height),
                    std::to_string(node.permission)});
  }
  return rows;
}

Rows ExpectedFans(const Enclosure& model) {
  Rows rows;
  for (const Psu& psu : model.psus) {
    const bool two = model.secondGeneration;
    rows.push_back({"PSU" + std::to_string(rows.size() + 1), OrNotAvailable(psu.fanA.speed),
                    OrNotAvailable(psu.fanA.pat), two ? OrNotAvailable(psu.fanB.speed) : "",
                    two ? OrNotAvailable(psu.fanB.pat) : "", FanStatusText(psu.fanStatus)});
  }
  return rows;
}

/// Without the slots whose PSU is absent.
Rows ExpectedFirmware(const Enclosure& model) {
  Rows rows;
  for (std::size_t index = 0; index < model.psus.size(); ++index) {
    const Psu& psu = model.psus[index];
    const std::string slot = std::to_string(index + 1);
    const std::string manufacturer(psu.manufacturer.begin(), psu.manufacturer.end());
    if (psu.present) {
      rows.push_back({"PSU" + slot,
                      "PSU" + manufacturer + Dotted(psu.position.first, psu.position.second),
                      Dotted(psu.version.major, psu.version.minor), slot, "Power Supply " + slot});
    }
  }
  return rows;
}

/// The readers take one byte a flag, in which the ninth PSU has no bit.
Rows ExpectedFlags(const Enclosure& model) {
  Rows rows;
  for (const Psu& psu : model.psus) {
    const bool told = rows.size() < 8;
    rows.push_back({told && psu.earlyPowerOffWarning ? "trigger" : "not trigger",
                    told && psu.throttle ? "trigger" : "not trigger",
                    told && psu.present ? "present" : "not present",
                    told && psu.powerGood ? "power good" : "not power good"});
  }
  return rows;
}

Texts Row(const ChassisPowerCon& record) {
  return {record.minPower, record.avgPower, record.maxPower};
}

class InventoryOverTheWire : public WireTest,
                             public ::testing::WithParamInterface<std::tuple<Kind, std::string>> {
 protected:
  const std::string scenario = ScenarioText(std::get<1>(GetParam()));
  const Enclosure model =
      ParseScenario(scenario, "ready scenario", MakeEnclosure(std::get<0>(GetParam()).kind))
          .enclosure;
  const SimulatedSmm simulator{std::get<0>(GetParam()).options, scenario};
  SMMInventory inventory{SettingsOf(simulator)};
};

TEST_P(InventoryOverTheWire, IdentityIsThatOfTheModel) {
  std::string machineType;
  std::string serialNumber;
  std::string name;
  std::string version;
  EXPECT_EQ(inventory.GetSmmMT(machineType), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmSN(serialNumber), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmName(name), StatusCode::Success);
  EXPECT_EQ(inventory.GetSmmVersion(version), StatusCode::Success);
  EXPECT_EQ(machineType, model.machineType);
  EXPECT_EQ(serialNumber, model.serialNumber);
  EXPECT_EQ(name, model.name);
  EXPECT_EQ(version, model.buildName + "-" + Dotted(model.majorRevision, model.minorRevision));
}

TEST_P(InventoryOverTheWire, CountsAreThoseOfTheModel) {
  SMMStatus status;
  EXPECT_EQ(inventory.GetSMMStatus(status), StatusCode::Success);
  EXPECT_EQ(status.platformId, std::get<0>(GetParam()).platformId);
  EXPECT_EQ(static_cast<std::size_t>(status.psuSlotCount), model.psus.size());
  EXPECT_EQ(inventory.GetNodeNub(), model.nodes.size());
}

TEST_P(InventoryOverTheWire, ChassisPowerAndCapsAreThoseOfTheModel) {
  ChassisPowerCon power;
  ChassisPowerCap cap;
  EXPECT_EQ(inventory.GetChassisPowerConsumption(power), StatusCode::Success);
  EXPECT_EQ(inventory.GetChassisPowerCap(cap), StatusCode::Success);
  EXPECT_EQ(Row(power),
            (Texts{std::to_string(model.power.minimum), std::to_string(model.power.average),
                   std::to_string(model.power.maximum)}));
  EXPECT_EQ((Texts{cap.minCap, cap.maxCap, cap.protectiveCap, cap.userCap, cap.thermalCap}),
            (Texts{OrNotAvailable(model.caps.minimum), OrNotAvailable(model.caps.maximum),
                   OrNotAvailable(model.caps.protective), OrNotAvailable(model.caps.user),
                   OrNotAvailable(model.caps.thermal)}));
}

TEST_P(InventoryOverTheWire, NodesAreThoseOfTheModel) {
  Rows power;
  Rows status;
  for (unsigned long node = 1; node <= inventory.GetNodeNub(); ++node) {
    ChassisPowerCon nodePower;
    NodeStatus nodeStatus;
    EXPECT_EQ(inventory.GetNodePowerConsumption(node, nodePower), StatusCode::Success);
    EXPECT_EQ(inventory.GetNodeStatus(node, nodeStatus), StatusCode::Success);
    power.push_back(Row(nodePower));
    status.push_back({nodeStatus.powerState, nodeStatus.width, nodeStatus.height,
                      std::to_string(nodeStatus.permissionState)});
  }
  EXPECT_EQ(power, ExpectedNodePower(model));
  EXPECT_EQ(status, ExpectedNodeStatus(model));
}

TEST_P(InventoryOverTheWire, PsuFansAreThoseOfTheModel) {
  std::vector<PSUFanSpeed> fans;
  EXPECT_EQ(inventory.GetPSUFanSpeed(fans), StatusCode::Success);
  Rows rows;
  for (const PSUFanSpeed& fan : fans) {
    rows.push_back({fan.name, fan.speedA, fan.patA, fan.speedB, fan.patB, fan.status});
  }
  EXPECT_EQ(rows, ExpectedFans(model));
}

TEST_P(InventoryOverTheWire, PsuFirmwareIsThatOfTheModelsPresentPsus) {
  std::vector<PSUFwInfo> firmware;
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), StatusCode::Success);
  Rows rows;
  for (const PSUFwInfo& psu : firmware) {
    rows.push_back({psu.name, psu.identifier, psu.version, psu.slot, psu.description});
  }
  EXPECT_EQ(rows, ExpectedFirmware(model));
}

TEST_P(InventoryOverTheWire, PsuFlagsAreThoseOfTheModel) {
  std::vector<PSUStatus> psus;
  EXPECT_EQ(inventory.GetPSUStatus(psus), StatusCode::Success);
  Rows rows;
  for (const PSUStatus& psu : psus) {
    rows.push_back({psu.epow, psu.throttle, psu.present, psu.powerGood});
  }
  EXPECT_EQ(rows, ExpectedFlags(model));
}

INSTANTIATE_TEST_SUITE_P(Wire, InventoryOverTheWire,
                         ::testing::Combine(::testing::ValuesIn(Kinds()),
                                            ::testing::ValuesIn(ReadyScenarios())),
                         [](const auto& instance) {
                           std::string name = std::get<1>(instance.param);
                           name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                           return std::get<0>(instance.param).name + std::string("_") + name;
                         });

/// The PSU that the simulated controller holds selected.
std::vector<std::uint8_t> SelectedPsu(const SimulatedSmm& simulator) {
  IpmiClient client(simulator.Host(), "admin", "sesame", std::to_string(simulator.Port()), 3);
  IPMICOMMAND request;
  request.netFn = 0x32;
  request.cmd = 0xF4;
  request.data = {0x00};
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0xFF;
  EXPECT_EQ(client.connect(), 0);
  EXPECT_EQ(client.send(request, response, completionCode), 0);
  EXPECT_EQ(completionCode, 0);
  return response;
}

struct SelectionCase {
  Kind kind;
  int greatest;
  std::uint8_t selectedBehindTheGreatest;
};

std::ostream& operator<<(std::ostream& stream, const SelectionCase& row) {
  return stream << row.kind;
}

class SelectionOverTheWire : public WireTest, public ::testing::WithParamInterface<SelectionCase> {
 protected:
  const SimulatedSmm simulator{GetParam().kind.options};
  SMMInventory inventory{SettingsOf(simulator)};
};

TEST_P(SelectionOverTheWire, SelectedPsuIsTheOneThatTheControllerHolds) {
  EXPECT_EQ(inventory.SelectPSU(GetParam().greatest), StatusCode::Success);
  EXPECT_EQ(SelectedPsu(simulator),
            std::vector<std::uint8_t>{static_cast<std::uint8_t>(GetParam().greatest)});
}

TEST_P(SelectionOverTheWire, PsuBehindTheGreatestIsClampedOrLeavesTheSelection) {
  EXPECT_EQ(inventory.SelectPSU(1), StatusCode::Success);
  EXPECT_EQ(inventory.SelectPSU(GetParam().greatest + 1), StatusCode::Success);
  EXPECT_EQ(SelectedPsu(simulator),
            std::vector<std::uint8_t>{GetParam().selectedBehindTheGreatest});
}

INSTANTIATE_TEST_SUITE_P(Wire, SelectionOverTheWire,
                         ::testing::Values(SelectionCase{Kinds()[0], 3, 3},
                                           SelectionCase{Kinds()[1], 9, 1},
                                           SelectionCase{Kinds()[2], 2, 1}),
                         [](const auto& instance) { return instance.param.kind.name; });

TEST(ReadyScenario, ListHoldsThePromisedOnes) {
  EXPECT_THAT(ReadyScenarios(),
              ::testing::ElementsAre("extremes", "healthy", "node-fault", "psu-missing"));
}

}  // namespace
}  // namespace Tavrin
