#pragma once

#include <cstdint>

#include "simulator/EnclosureState.h"
#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// What the PSU keeps in the register, as a controller of the enclosure's generation reads it:
/// firmware version (0xFC), manufacturer (0x99, PMBus MFR_ID) or position (0xF0). Empty for a
/// register that it does not have.
Bytes RegisterBytes(const EnclosureState& enclosure, const Psu& psu, std::uint8_t number);

}  // namespace Tavrin::Simulator
