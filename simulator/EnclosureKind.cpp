#include "simulator/EnclosureKind.h"

#include <array>
#include <utility>

namespace Tavrin::Simulator {
namespace {

constexpr std::array<std::pair<EnclosureKind, const char*>, 3> kKindNames = {{
    {EnclosureKind::FirstGeneration, "first-generation"},
    {EnclosureKind::SecondGeneration253, "second-generation-253"},
    {EnclosureKind::SecondGeneration254, "second-generation-254"},
}};

std::uint16_t Word(unsigned int value) { return static_cast<std::uint16_t>(value); }
std::uint8_t Byte(unsigned int value) { return static_cast<std::uint8_t>(value); }

/// The node of the number. `extra` sets the enclosures apart.
Node MakeNode(unsigned int number, unsigned int extra) {
  Node node;
  node.power = {Word(110 + extra + 9 * number), Word(330 + extra + 11 * number),
                Word(600 + extra + 13 * number)};
  node.width = number % 2 == 1 ? 1 : 2;
  node.height = number % 2 == 1 ? 2 : 1;
  node.permission = Byte(0x10 + number);
  return node;
}

/// The PSU of the slot. `extra` sets the enclosures apart.
Psu MakePsu(unsigned int slot, unsigned int extra) {
  Psu psu;
  psu.fanA = {Word(5200 + 40 * extra + 290 * slot), Byte(60 + slot)};
  psu.fanB = {Word(8200 + 40 * extra + 335 * slot), Byte(80 + slot)};
  psu.version = {Byte(slot), Byte(0x07 + extra + slot)};
  psu.manufacturer = {'P', Byte('A' + extra), 'S', Byte('0' + slot)};
  psu.position = {Byte(0x09 + slot), Byte(slot)};
  return psu;
}

/// What the nodes take and what is around them.
PowerReadings TotalPower(const std::vector<Node>& nodes) {
  PowerReadings total = {95, 180, 260};
  for (const Node& node : nodes) {
    total.minimum = Word(total.minimum + node.power.minimum);
    total.average = Word(total.average + node.power.average);
    total.maximum = Word(total.maximum + node.power.maximum);
  }
  return total;
}

void Equip(EnclosureState& enclosure, unsigned int nodes, unsigned int psus, unsigned int extra) {
  for (unsigned int number = 1; number <= nodes; ++number) {
    enclosure.nodes.push_back(MakeNode(number, extra));
  }
  for (unsigned int slot = 1; slot <= psus; ++slot) {
    enclosure.psus.push_back(MakePsu(slot, extra));
  }
  enclosure.power = TotalPower(enclosure.nodes);
}

EnclosureState FirstGeneration() {
  EnclosureState enclosure;
  enclosure.majorRevision = 0x01;
  enclosure.minorRevision = 0x05;
  enclosure.revisionTail = {0xA1, 0xA2, 0xA3};
  enclosure.buildName = "FGEN7";
  enclosure.machineType = "1QA4";
  enclosure.serialNumber = "SIM10001";
  enclosure.name = "simulated-first";
  Equip(enclosure, 4, 2, 0);
  return enclosure;
}

EnclosureState SecondGeneration253() {
  EnclosureState enclosure;
  enclosure.secondGeneration = true;
  enclosure.platformId = 0xFD;
  enclosure.enclosureType = 0x03;  // Nine PSU slots.
  enclosure.majorRevision = 0x02;
  enclosure.minorRevision = 0x1A;
  enclosure.revisionTail = {0xB1, 0xB2, 0xB3};
  enclosure.buildName = "SGEN3";
  enclosure.machineType = "2QC9";
  enclosure.serialNumber = "SIM25301";
  enclosure.name = "simulated-second-253";
  enclosure.caps = {2210, 9700, 9100, 7600, 8300};
  Equip(enclosure, 12, 9, 1);
  return enclosure;
}

EnclosureState SecondGeneration254() {
  EnclosureState enclosure;
  enclosure.secondGeneration = true;
  enclosure.platformId = 0xFE;
  enclosure.enclosureType = 0x01;  // Without meaning on this platform: it always has two PSU slots.
  enclosure.majorRevision = 0x10;
  enclosure.minorRevision = 0x0F;
  enclosure.revisionTail = {0xC1, 0xC2, 0xC3};
  enclosure.buildName = "SGEN4";
  enclosure.machineType = "2qB2";
  enclosure.serialNumber = "SIM25401";
  enclosure.name = "simulated-second-254";
  enclosure.caps = {640, 3450, 3010, 2150, 2560};
  Equip(enclosure, 4, 2, 2);
  return enclosure;
}

}  // namespace

std::string KindName(EnclosureKind kind) {
  for (const auto& [known, name] : kKindNames) {
    if (known == kind) {
      return name;
    }
  }
  return {};
}

std::optional<EnclosureKind> KindFromName(const std::string& name) {
  for (const auto& [kind, known] : kKindNames) {
    if (known == name) {
      return kind;
    }
  }
  return std::nullopt;
}

EnclosureState MakeEnclosure(EnclosureKind kind) {
  switch (kind) {
    case EnclosureKind::FirstGeneration:
      return FirstGeneration();
    case EnclosureKind::SecondGeneration253:
      return SecondGeneration253();
    case EnclosureKind::SecondGeneration254:
      return SecondGeneration254();
  }
  return {};
}

}  // namespace Tavrin::Simulator
