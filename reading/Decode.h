#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"
#include "platform/SMMInfo.h"
#include "reading/Reading.h"

namespace Tavrin {

// The library's records, whose values are texts, as the typed values of a reading. Each value keeps
// the library's text. What is none of the texts that InventoryRecords.h lists counts as not
// reported. Functions of their arguments alone, which throw what allocation throws.

/// A number for which the library has no text.
Number NumberOf(std::int64_t number);

/// A generation, for which the library has no text, either.
Value<SMMIype> GenerationOf(SMMIype generation);

/// A text as it is, whatever its bytes: there is none that stands for an absent one.
Text TextOf(const std::string& text);

/// Of the chassis or of a node.
PowerReadings DecodePower(const ChassisPowerCon& power);

/// Of the chassis.
PowerCaps DecodeCaps(const ChassisPowerCap& caps);

/// A width that is a code is NodeWidth::Other.
NodeState DecodeNode(const NodeStatus& node);

// The records of PSU slots say in their names which slot they are of. There is one record for each
// slot up to `slotCount`, or up to the last one that is told of; the values of one that is not are
// absent for the reason given.

/// An empty text of fan B stands for Absence::NoSecondFan.
std::vector<PsuFans> DecodeFans(const std::vector<PSUFanSpeed>& records, std::size_t slotCount,
                                Absence untold);

std::vector<PsuFirmware> DecodeFirmware(const std::vector<PSUFwInfo>& records,
                                        std::size_t slotCount, Absence untold);

/// The records are of the slots from 1 on. The flags of a slot behind kSlotsWithFlags are not told,
/// whatever its record says, which looks like that of an absent PSU.
std::vector<PsuFlags> DecodeFlags(const std::vector<PSUStatus>& records);

/// As many records, of no content, as a query gives that failed.
std::vector<PsuFlags> UnreadFlags(std::size_t slotCount);

}  // namespace Tavrin
