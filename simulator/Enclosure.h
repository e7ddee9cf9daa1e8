#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin::Simulator {

/// The enclosures that can be simulated.
enum class EnclosureKind { FirstGeneration, SecondGeneration253, SecondGeneration254 };

/// The kind as the settings file spells it: "first-generation", "second-generation-253",
/// "second-generation-254".
std::string KindName(EnclosureKind kind);

/// The kind of that name, or nothing when there is none.
std::optional<EnclosureKind> KindFromName(const std::string& name);

/// What one simulated enclosure is and measures. Every answer is encoded from this record. All
/// texts and numbers are invented.
struct Enclosure {
  bool secondGeneration = false;
  std::uint8_t platformId = 0;     ///< Second generation only.
  std::uint8_t enclosureType = 0;  ///< Second generation only: decides the number of PSU slots.
  std::uint8_t majorRevision = 0;
  std::uint8_t minorRevision = 0;
  std::array<std::uint8_t, 3> revisionTail{};  ///< Follows the revision; no reader uses it.
  std::string buildName;                       ///< At most 6 characters, see EncodeStatus.
  std::string machineType;                     ///< Four letters or digits.
  std::string serialNumber;
  std::string name;
};

/// The enclosure of that kind.
Enclosure MakeEnclosure(EnclosureKind kind);

}  // namespace Tavrin::Simulator
