#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/IpmiClient.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/RecordText.h"
#include "tests/support/Content.h"
#include "tests/wire/WireTest.h"

// Each value that the library returns, beside what inventories.expected says in plain text.

namespace Tavrin {
namespace {

using Texts = std::vector<std::string>;

struct Kind {
  const char* name;
  Texts options;
};

std::ostream& operator<<(std::ostream& stream, const Kind& kind) { return stream << kind.name; }

const std::array<Kind, 3>& Kinds() {
  static const std::array<Kind, 3> kinds = {
      {{"FirstGeneration", {"--generation", "1"}},
       {"SecondGeneration253", {"--generation", "2", "--platform", "253"}},
       {"SecondGeneration254", {"--generation", "2", "--platform", "254"}}}};
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
  return ContentOf(std::string(SMM_SCENARIOS) + "/" + name + ".json");
}

/// The lines under the heading "[NAME]" of a file that says what every enclosure gives, down to the
/// next heading. Empty lines and those that begin with "#" do not count.
Texts ExpectedLines(const std::string& name) {
  std::ifstream file(EXPECTED_INVENTORIES);
  Texts lines;
  bool isMeant = false;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind('[', 0) == 0) {
      isMeant = line == '[' + name + ']';
    } else if (isMeant && !line.empty() && line[0] != '#') {
      lines.push_back(line);
    }
  }
  return lines;
}

std::string Joined(const Texts& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + '\n';
  }
  return text;
}

/// One value of each kind of output as a row: its members, one behind the other.
template <typename Record>
Texts Rows(const Record& record) {
  std::string row;
  Double::ForEachMember(record, [&](const char* /*name*/, const auto& value) {
    row += (row.empty() ? "" : " | ") + Double::ValueText(value);
  });
  return {row};
}

Texts Rows(const std::string& text) { return {Double::ValueText(text)}; }

template <typename Record>
Texts Rows(const std::vector<Record>& records) {
  Texts rows;
  for (const Record& record : records) {
    rows.push_back(Rows(record).front());
  }
  return rows;
}

class InventoryOverTheWire : public WireTest,
                             public ::testing::WithParamInterface<std::tuple<Kind, std::string>> {
 protected:
  /// Everything that the operation gives, a line each: of every node where it has one.
  Texts LinesOf(const Double::Operation<SMMInventory>& operation) {
    const bool isOfNode = operation.argument == Double::Argument::Node;
    Texts lines;
    for (int node = 1; node <= (isOfNode ? static_cast<int>(inventory.GetNodeNub()) : 1); ++node) {
      Double::Output output = operation.fresh;
      EXPECT_EQ(operation.call(inventory, node, output), StatusCode::Success) << operation.name;
      for (const std::string& row :
           std::visit([](const auto& filled) { return Rows(filled); }, output)) {
        lines.push_back(operation.name + (isOfNode ? ' ' + std::to_string(node) : "") + ':' +
                        (row.empty() ? "" : ' ' + row));
      }
    }
    return lines;
  }

  const SimulatedSmm simulator{std::get<Kind>(GetParam()).options,
                               ScenarioText(std::get<std::string>(GetParam()))};
  SMMInventory inventory{SettingsOf(simulator)};
};

TEST_P(InventoryOverTheWire, IsWhatTheEnclosureHas) {
  Texts lines = {"GetNodeNub: " + std::to_string(inventory.GetNodeNub())};
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    if (operation.argument != Double::Argument::Psu) {
      const Texts ofOperation = LinesOf(operation);
      lines.insert(lines.end(), ofOperation.begin(), ofOperation.end());
    }
  }
  const std::string name =
      std::get<Kind>(GetParam()).name + (' ' + std::get<std::string>(GetParam()));
  EXPECT_EQ(Joined(lines), Joined(ExpectedLines(name)));
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
