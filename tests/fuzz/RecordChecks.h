#pragma once

#include <cstdint>
#include <string>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin::Fuzz {

// What InventoryRecords.h says about each record. Every check reads every member.

/// Plain decimal, without leading zeros, from `smallest` to `largest`.
bool IsNumber(const std::string& text, std::uint32_t smallest, std::uint32_t largest);

/// A number of that range, or "N/A".
bool IsReading(const std::string& text, std::uint32_t smallest, std::uint32_t largest);

/// Lower-case hexadecimal of a byte without leading zeros, ".", and two digits.
bool IsDottedHex(const std::string& text);

/// Printable ASCII only.
bool IsPrintable(const std::string& text);

/// Printable text, "-" and a revision.
bool IsSmmVersion(const std::string& text);

void CheckChassisPower(const ChassisPowerCon& power);
void CheckNodePower(const ChassisPowerCon& power);
void CheckPowerCap(const ChassisPowerCap& cap);
void CheckFans(const PSUFanSpeed& fans, std::uint64_t slot, bool hasFanB);
void CheckFirmware(const PSUFwInfo& firmware, std::uint64_t slotCount);
void CheckPsuStatus(const PSUStatus& status);
void CheckNodeStatus(const NodeStatus& status);
void CheckSmmStatus(const SMMStatus& status);

}  // namespace Tavrin::Fuzz
