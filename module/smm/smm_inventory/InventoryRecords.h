#pragma once

#include <cstdint>
#include <string>

namespace Tavrin {

// The records that the queries of SMMInventory fill. Byte positions count from 0 at the first byte
// after the completion code and, unless a comment says otherwise, after the bytes were removed that
// a second-generation SMM puts in front. Readings are unsigned and, where they have two bytes,
// little-endian (low byte first); their texts are plain decimal, without scaling, and the SMM
// states no unit for any of them.

/// What the SMM reports about the enclosure it controls: network function 0x32, command 0xA8. No
/// byte is removed from this answer.
struct SMMStatus {
  /// 253 (0xFD) when byte 0 of the answer is 0xFD, 254 (0xFE) for every other value of it.
  std::int32_t platformId = 0;

  /// Number of PSU slots. Platform 253: 9 when byte 13 of the answer is 0x03, otherwise 6.
  /// Platform 254: 2.
  std::int32_t psuSlotCount = 0;
};

/// Power readings of the chassis or of one node: network function 0x32, command 0x98. For the
/// chassis each text is a number from "0" to "65535"; for a node the readings 0 and 65535 are
/// "N/A". No unit is stated.
struct ChassisPowerCon {
  std::string minPower;  ///< Lowest reading, bytes 0 and 1.
  std::string avgPower;  ///< Average reading, bytes 2 and 3.
  std::string maxPower;  ///< Highest reading, bytes 4 and 5.
};

/// Power caps of the chassis: network function 0x32, command 0x9D. Each text is a number from "1"
/// to "65535", or "N/A" for 0. No unit is stated.
struct ChassisPowerCap {
  std::string minCap;         ///< Lower bound of the cap range, bytes 0 and 1.
  std::string maxCap;         ///< Upper bound of the cap range, bytes 2 and 3.
  std::string protectiveCap;  ///< Protective cap, bytes 4 and 5.
  std::string userCap;        ///< Cap set by the user, bytes 6 and 7.
  std::string thermalCap;     ///< Thermal cap, bytes 8 and 9.
};

/// Fan readings of one PSU: network function 0x32, command 0xA5, data: the slot. A speed is a
/// number from "1" to "65535" and a Pat value one from "1" to "255"; either is "N/A" for 0. No unit
/// is stated.
struct PSUFanSpeed {
  std::string name;    ///< "PSU" and the slot number, for example "PSU2".
  std::string speedA;  ///< Speed of fan A, the only fan of the first generation, bytes 0 and 1.
  std::string patA;    ///< Pat value of fan A, byte 2.
  std::string speedB;  ///< Speed of fan B, bytes 3 and 4; empty on the first generation.
  std::string patB;    ///< Pat value of fan B, byte 5; empty on the first generation.

  /// "Not Present", "Abnormal" or "Normal" for the values 0, 1 and 2 of byte 6 (byte 3 on the first
  /// generation); "Unknown" for every other.
  std::string status;
};

/// Firmware data of one PSU, from three of its registers. The second generation reads them with
/// network function 0x32, command 0x92 (data: slot, read count, register); every other SMM type
/// with Master Write-Read, network function 0x06, command 0x52 (data: bus, slave address 0xD0, read
/// count, register). The bus is 0x0F for slot 1 and 0x0D for every other; the read counts are 2 for
/// the version, 5 for the manufacturer and 32 for the position.
struct PSUFwInfo {
  std::string name;  ///< "PSU" and the slot number, for example "PSU1".

  /// "PSU", the manufacturer and the position. The manufacturer is four raw bytes of register 0x99
  /// (PMBus MFR_ID; the first generation puts the block length in front), which may be any bytes,
  /// zero bytes included. The position is register 0xF0: byte 0 in lower-case hexadecimal, ".", and
  /// byte 1 in lower-case hexadecimal with two digits.
  std::string identifier;

  /// Firmware version, register 0xFC: byte 1 in lower-case hexadecimal, ".", and byte 0 in
  /// lower-case hexadecimal with two digits, for example "1.0a".
  std::string version;

  std::string slot;         ///< The slot number in decimal, counted from 1.
  std::string description;  ///< "Power Supply " and the slot number, for example "Power Supply 1".
};

/// Status flags of one PSU: network function 0x32, command 0x91. The answer has one byte a flag and
/// one bit a PSU in it, bit 0 for PSU 1; the bit repeats from PSU 33 on, and is 0 from PSU 9 to 32.
///
/// Byte of each flag, counted in the answer as received: first generation 0, 1, 2 and 3; second
/// generation 0, 2, 4 and 6, but 0, 4, 8 and 6 when the answer has exactly 10 bytes.
struct PSUStatus {
  std::string epow;       ///< Early power-off warning: "trigger" or "not trigger".
  std::string throttle;   ///< "trigger" or "not trigger".
  std::string present;    ///< "present" or "not present".
  std::string powerGood;  ///< "power good" or "not power good".
};

/// State of one compute node: network function 0x32, command 0xA7, data: the node number.
struct NodeStatus {
  /// "Power OFF", "No Permission", "Power Fault" or "Power ON" for the values 0x00, 0x20, 0x40 and
  /// 0x80 of byte 0; "Fault" for every other.
  std::string powerState;

  /// Width code, byte 1: "Half" for 1, "Full" for 2, "N/A" for 255, otherwise the code in decimal.
  std::string width;

  /// Height code, byte 2: "N/A" for 255, otherwise the code in decimal.
  std::string height;

  std::int32_t permissionState = 0;  ///< Permission byte as it is, 0 to 255, byte 3.
};

}  // namespace Tavrin
