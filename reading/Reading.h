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

// What one pass over an enclosure gave: plain values, which belong to whoever holds them and may be
// copied, kept and looked at on any thread. Beside each stands the operation of SMMInventory that
// it comes from, and the command that this sends (network function 0x32 unless said otherwise).
// Which bytes of the answer a value is made of, module/smm/smm_inventory/InventoryRecords.h says.
// The SMM states no unit for any reading.

/// The SMM's generation and what follows from its status.
///
/// The generation is asked for in every pass. Status, cause and times of the other three are those
/// of the construction of the library's object, which read the SMM's status and which an earlier
/// pass may have made; `psuSlotCount` says when they are not. Where no status was read the three
/// are absent, and say why.
struct Detection {
  /// Command 0xA8, before the library is asked anything; or the configuration (SMM_TYPE). A type
  /// that is neither generation may occur.
  Query<Value<SMMIype>> generation;

  /// 253 or 254; by the number of nodes.
  Query<Number> platformId;

  /// 2, 6 or 9: as many as GetPSUStatus() (command 0x91) gives in this pass. Where that gives none,
  /// status, cause and times are those of GetPSUStatus().
  Query<Number> psuSlotCount;

  /// 4, or 12 on platform 253: GetNodeNub().
  Query<Number> nodeCount;
};

/// How the SMM names itself. Each text is printable ASCII.
struct Identity {
  /// GetSmmMT(), command 0xB0: four letters or digits.
  Query<Text> machineType;

  /// GetSmmSN(), command 0xB0: without blanks at either end; may be empty.
  Query<Text> serialNumber;

  /// GetSmmVersion(), command 0xA8: build name, "-", major and minor in hexadecimal, such as
  /// "ABC-1a.05".
  Query<Text> firmwareVersion;

  /// GetSmmName(), command 0xB0: with the blanks at both ends; may be empty.
  Query<Text> name;
};

/// Power readings of the chassis (GetChassisPowerConsumption()) or of one node
/// (GetNodePowerConsumption()), command 0x98: 0 to 65535 each. Of a node, 0 and 65535 count as not
/// reported. Over which time the SMM looks for the lowest, the highest and the average, it does not
/// state.
struct PowerReadings {
  Number minimum;
  Number average;
  Number maximum;
};

/// Power caps of the chassis: GetChassisPowerCap(), command 0x9D. 1 to 65535 each; 0 counts as not
/// reported.
struct PowerCaps {
  /// Bounds of the range of caps.
  Number rangeMinimum;
  Number rangeMaximum;

  /// Of these, the user sets one.
  Number protectiveCap;
  Number userCap;
  Number thermalCap;
};

/// By the codes 0x80, 0x00, 0x20 and 0x40; Fault stands for every other.
enum class NodePowerState { On, Off, NoPermission, PowerFault, Fault };

/// By the codes 1 and 2; of Other the text has the code in decimal.
enum class NodeWidth { Half, Full, Other };

/// State of one compute node: GetNodeStatus(), command 0xA7.
struct NodeState {
  Value<NodePowerState> powerState;

  /// The code 255 counts as not reported.
  Value<NodeWidth> width;

  /// A code, 0 to 254; 255 counts as not reported.
  Number height;

  /// The SMM's permission byte as it is, 0 to 255; the library has no text for it.
  Number permission;
};

/// By the codes 2, 1 and 0; Unknown stands for every other.
enum class PsuFanState { Normal, Abnormal, NotPresent, Unknown };

/// Fan readings of one PSU slot: GetPSUFanSpeed(), command 0xA5. 0 counts as not reported, which is
/// also what an absent PSU gives. B is absent where the SMM is of the first generation.
struct PsuFans {
  /// Counted from 1.
  std::size_t slot = 0;

  /// "PSU" and the slot, by the library.
  Text name;

  /// Speeds are 1 to 65535, Pat values 1 to 255.
  Number speedA;
  Number patA;
  Number speedB;
  Number patB;

  /// Of both fans together.
  Value<PsuFanState> status;
};

/// Firmware of one PSU slot: GetPSUFwInfo(), up to three exchanges a slot: command 0x92, on the
/// first generation Master Write-Read (network function 0x06, command 0x52). A slot whose PSU does
/// not answer all of them is absent, with Absence::SlotUnanswered.
struct PsuFirmware {
  /// Counted from 1.
  std::size_t slot = 0;

  /// "PSU" and the slot, by the library.
  Text name;

  /// "PSU", four bytes of the manufacturer and the position. The four may be any bytes, zero bytes
  /// and those of an escape sequence included.
  Text identifier;

  /// Major and minor in hexadecimal, such as "1.0a".
  Text version;

  /// "Power Supply" and the slot, by the library.
  Text description;
};

/// Of so many PSU slots, counted from the first, the SMM's answer holds the status flags: it has
/// one byte a flag.
constexpr std::size_t kSlotsWithFlags = 8;

/// Status flags of one PSU slot: GetPSUStatus(), command 0x91, one exchange for all slots. Those of
/// a slot behind kSlotsWithFlags are absent, with Absence::FlagsNotTold.
struct PsuFlags {
  /// Counted from 1.
  std::size_t slot = 0;

  /// Early power-off warning.
  Flag epow;

  /// True where the PSU triggers it.
  Flag throttle;

  /// Whether a PSU is in the slot, and whether it says that its power is good.
  Flag present;
  Flag powerGood;
};

/// What became of the selection of a PSU: SelectPSU(), command 0xF4. What is sent depends on the
/// SMM; whether it acknowledged is the status of the query.
struct PsuSelection {
  /// The number that was asked for, 1 to 9.
  int asked = 0;

  /// Whether a request is known to have reached the SMM.
  bool isSent = false;

  /// The PSU in the request; NotReported when the request names none.
  Number sent;

  /// What became of the number, for people; printable, and never empty.
  std::string remark;
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
  /// Host and port, as "192.0.2.10:623" or "[2001:db8::1]:623"; the host as the settings have it.
  std::string address;

  /// When the pass began, by this machine's clock.
  std::chrono::system_clock::time_point readAt;

  /// How long it took, by a clock that nobody sets; the construction of the library's object is
  /// included where the pass made one.
  std::chrono::milliseconds duration{0};

  /// Why no query came about: nobody was there, or the user was refused, or the generation stayed
  /// unknown. Everything below is then empty.
  std::optional<QueryOutcome> failure;

  std::optional<Detection> detection;
  std::optional<Identity> identity;
  std::optional<Query<PowerReadings>> chassisPower;
  std::optional<Query<PowerCaps>> powerCaps;

  // One query a node, node 1 first, of as many as the library assumes: 4 where no status was read.
  std::optional<std::vector<Query<NodeState>>> nodeStatus;
  std::optional<std::vector<Query<PowerReadings>>> nodePower;

  // One query with a record a slot, slot 1 first; without records where the slots were not counted.
  std::optional<SlotQuery<PsuFans>> psuFans;
  std::optional<SlotQuery<PsuFirmware>> psuFirmware;
  std::optional<SlotQuery<PsuFlags>> psuStatus;

  /// Of Enclosure::SelectPsu() alone.
  std::optional<Query<PsuSelection>> psuSelection;
};

}  // namespace Tavrin
