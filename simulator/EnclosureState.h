#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin::Simulator {

struct PowerReadings {
  std::uint16_t minimum = 0;
  std::uint16_t average = 0;
  std::uint16_t maximum = 0;
};

struct PowerCaps {
  std::uint16_t minimum = 610;   ///< Lower bound of the range in which a cap can be set.
  std::uint16_t maximum = 3400;  ///< Upper bound of that range.
  std::uint16_t protective = 2950;
  std::uint16_t user = 2100;
  std::uint16_t thermal = 2500;
};

namespace PowerState {
constexpr std::uint8_t kOff = 0x00;
constexpr std::uint8_t kNoPermission = 0x20;
constexpr std::uint8_t kFault = 0x40;
constexpr std::uint8_t kOn = 0x80;
}  // namespace PowerState

struct Node {
  PowerReadings power;
  std::uint8_t powerState = PowerState::kOn;
  std::uint8_t width{};   ///< 1 half, 2 full, 255 unknown.
  std::uint8_t height{};  ///< 255 unknown.
  std::uint8_t permission{};
};

namespace FanStatus {
constexpr std::uint8_t kNotPresent = 0;
constexpr std::uint8_t kAbnormal = 1;
constexpr std::uint8_t kNormal = 2;
}  // namespace FanStatus

struct Fan {
  std::uint16_t speed = 0;
  std::uint8_t pat = 0;
};

struct PsuVersion {
  std::uint8_t major{};
  std::uint8_t minor{};
};

struct PsuPosition {
  std::uint8_t first{};
  std::uint8_t second{};
};

struct Psu {
  Fan fanA;
  Fan fanB;  ///< Second generation only.
  std::uint8_t fanStatus = FanStatus::kNormal;
  PsuVersion version;
  std::array<std::uint8_t, 4> manufacturer{};
  PsuPosition position;
  bool present = true;  ///< The registers of an absent PSU cannot be read.
  bool powerGood = true;
  bool earlyPowerOffWarning = false;
  bool throttle = false;
};

/// What fits into the answers.
constexpr std::size_t kMaxMachineType = 8;
constexpr std::size_t kMaxSerialNumber = 12;
constexpr std::size_t kMaxName = 24;
constexpr std::size_t kMaxBuildName = 6;  ///< The enclosure type follows in the status.

/// What one simulated enclosure is and measures. Every answer is encoded from this record. All
/// texts and numbers are invented; within an answer no two bytes of the readings are alike. What a
/// record begins with is what a healthy enclosure has; MakeEnclosure() sets the kinds apart.
struct EnclosureState {
  bool secondGeneration = false;
  std::uint8_t platformId{};     ///< Second generation only.
  std::uint8_t enclosureType{};  ///< Second generation only: decides the number of PSU slots.
  std::uint8_t majorRevision{};
  std::uint8_t minorRevision{};
  std::array<std::uint8_t, 3> revisionTail{};  ///< Follows the revision; no reader uses it.
  std::string buildName;
  std::string machineType;  ///< Four letters or digits.
  std::string serialNumber;
  std::string name;
  PowerReadings power;  ///< At the inlet: what the nodes and everything around them take.
  PowerCaps caps;
  std::vector<Node> nodes;       ///< Node 1 first.
  std::vector<Psu> psus;         ///< Slot 1 first.
  std::uint8_t selectedPsu = 0;  ///< As it was last selected; 0 before that.
};

}  // namespace Tavrin::Simulator
