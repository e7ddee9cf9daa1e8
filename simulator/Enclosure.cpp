#include "simulator/Enclosure.h"

#include <utility>

namespace Tavrin::Simulator {
namespace {

constexpr std::array<std::pair<EnclosureKind, const char*>, 3> kKindNames = {{
    {EnclosureKind::FirstGeneration, "first-generation"},
    {EnclosureKind::SecondGeneration253, "second-generation-253"},
    {EnclosureKind::SecondGeneration254, "second-generation-254"},
}};

Enclosure FirstGeneration() {
  Enclosure enclosure;
  enclosure.majorRevision = 0x01;
  enclosure.minorRevision = 0x05;
  enclosure.revisionTail = {0xA1, 0xA2, 0xA3};
  enclosure.buildName = "FGEN7";
  enclosure.machineType = "1QA4";
  enclosure.serialNumber = "SIM10001";
  enclosure.name = "simulated-first";
  return enclosure;
}

Enclosure SecondGeneration253() {
  Enclosure enclosure;
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
  return enclosure;
}

Enclosure SecondGeneration254() {
  Enclosure enclosure;
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

Enclosure MakeEnclosure(EnclosureKind kind) {
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
