#pragma once

#include <cstdint>

#include "platform/ConnectionInfo.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {

/// The largest enclosure that there is.
class LargestEnclosure : public SimulatedSmm {
 public:
  LargestEnclosure() : SimulatedSmm({"--generation", "2", "--platform", "253"}) {}
};

/// Where a simulated enclosure is found, and with what user.
TavrinConnection::ConnectionInfo SettingsFor(std::uint16_t port);

/// Turns on FreeIPMI's open-session-privilege workaround, without which the simulator refuses
/// sessions.
void ConfigureForSimulator();

/// From now on pauses take their time.
void WaitForPauses();

}  // namespace Tavrin
