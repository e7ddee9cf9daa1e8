#pragma once

#include <string>

#include "module/smm/smm_inventory/SMMInventory.h"

namespace Tavrin {

/// Where a simulated enclosure is found, and with what user.
TavrinConnection::ConnectionInfo SettingsFor(std::uint16_t port, const std::string& password);

/// What clients of the simulator need.
void ConfigureForSimulator();

/// Runs every query; SelectPSU is none, since it changes the enclosure. Throws std::runtime_error
/// unless each succeeds and gives what the largest enclosure has: 12 nodes and 9 PSUs.
void QueryAll(SMMInventory& inventory);

/// Constructs an object and runs every query.
void ReadWholeInventory(const TavrinConnection::ConnectionInfo& settings);

/// How many seconds the pauses of all objects have added up to. They are counted and not waited.
unsigned int PausedSeconds();

}  // namespace Tavrin
