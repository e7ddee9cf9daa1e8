#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/SMMInfo.h"
#include "reading/Query.h"
#include "reading/Value.h"

namespace Tavrin {

// What one pass over an enclosure gave: plain values, in the units and with the meaning that
// module/smm/smm_inventory/InventoryRecords.h states for each.

/// The SMM's generation and what follows from its status. Time and duration of what the library
/// learnt when its object was constructed are those of the construction, which an earlier pass may
/// have made.
struct Detection {
  Query<Value<SMMIype>> generation;
  Query<Number> platformId;    ///< 253 or 254.
  Query<Number> psuSlotCount;  ///< 2, 6 or 9.
  Query<Number> nodeCount;     ///< 4 or 12.
};

/// How the SMM names itself.
struct Identity {
  Query<Text> machineType;
  Query<Text> serialNumber;
  Query<Text> firmwareVersion;
  Query<Text> name;
};

/// Power readings of the chassis or of a node.
struct PowerReadings {
  Number minimum;
  Number average;
  Number maximum;
};

/// Power caps of the chassis.
struct PowerCaps {
  Number rangeMinimum;
  Number rangeMaximum;
  Number protectiveCap;
  Number userCap;
  Number thermalCap;
};

enum class NodePowerState { On, Off, NoPermission, PowerFault, Fault };
enum class NodeWidth { Half, Full, Other };  ///< Other: the text has the code in decimal.

/// State of one compute node.
struct NodeState {
  Value<NodePowerState> powerState;
  Value<NodeWidth> width;
  Number height;      ///< A code.
  Number permission;  ///< 0 to 255.
};

enum class PsuFanState { Normal, Abnormal, NotPresent, Unknown };

/// Fan readings of one PSU slot.
struct PsuFans {
  std::size_t slot = 0;  ///< Counted from 1.
  Text name;
  Number speedA;
  Number patA;
  Number speedB;
  Number patB;
  Value<PsuFanState> status;
};

/// Firmware of one PSU slot.
struct PsuFirmware {
  std::size_t slot = 0;  ///< Counted from 1.
  Text name;
  Text identifier;
  Text version;
  Text description;
};

/// Of so many PSU slots, counted from the first, the SMM's answer holds the status flags: it has
/// one byte a flag.
constexpr std::size_t kSlotsWithFlags = 8;

/// Status flags of one PSU slot.
struct PsuFlags {
  std::size_t slot = 0;  ///< Counted from 1.
  Flag epow;             ///< Early power-off warning.
  Flag throttle;
  Flag present;
  Flag powerGood;
};

/// What became of the selection of a PSU.
struct PsuSelection {
  int asked = 0;        ///< The number that was asked for.
  bool isSent = false;  ///< A request is known to have reached the SMM.
  Number sent;          ///< The PSU in the request; NotReported when the request names none.
  std::string remark;   ///< For people: what became of the number.
};

/// The parts of a reading, in the order in which they are read and shown, which stands here alone.
/// Detection comes first, whatever is asked for; PsuSelection comes last, of a pass of its own.
enum class Part {
  Detection,
  Identity,
  ChassisPower,
  PowerCaps,
  NodeStatus,
  NodePower,
  PsuFans,
  PsuFirmware,
  PsuStatus,
  PsuSelection
};

/// Every part, in the order of Part.
constexpr auto kEveryPart = [] {
  std::array<Part, static_cast<std::size_t>(Part::PsuSelection) + 1> parts{};
  for (std::size_t index = 0; index < parts.size(); ++index) {
    parts[index] = static_cast<Part>(index);
  }
  return parts;
}();

/// The parts that a pass can be asked for, in the order of Part: those between the first and the
/// last.
constexpr auto kPartsToAskFor = [] {
  std::array<Part, kEveryPart.size() - 2> parts{};
  for (std::size_t index = 0; index < parts.size(); ++index) {
    parts[index] = kEveryPart[index + 1];
  }
  return parts;
}();

/// One pass. What was not asked for is empty; what was asked for and failed says so.
struct Reading {
  std::string address;  ///< Host and port, as "192.0.2.10:623" or "[2001:db8::1]:623".
  std::chrono::system_clock::time_point readAt;  ///< When the pass began.
  std::chrono::milliseconds duration{0};         ///< How long it took.

  /// Why no query came about: nobody was there, or the user was refused, or the generation stayed
  /// unknown. Everything below is then empty.
  std::optional<QueryOutcome> failure;

  std::optional<Detection> detection;
  std::optional<Identity> identity;
  std::optional<Query<PowerReadings>> chassisPower;
  std::optional<Query<PowerCaps>> powerCaps;
  std::optional<std::vector<Query<NodeState>>> nodeStatus;     ///< Node 1 first.
  std::optional<std::vector<Query<PowerReadings>>> nodePower;  ///< Node 1 first.
  std::optional<SlotQuery<PsuFans>> psuFans;                   ///< Slot 1 first, one record a slot.
  std::optional<SlotQuery<PsuFirmware>> psuFirmware;           ///< Slot 1 first, one record a slot.
  std::optional<SlotQuery<PsuFlags>> psuStatus;                ///< Slot 1 first, one record a slot.
  std::optional<Query<PsuSelection>> psuSelection;
};

}  // namespace Tavrin
