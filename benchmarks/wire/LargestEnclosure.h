#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/ConnectionInfo.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {

/// The largest enclosure that there is.
class LargestEnclosure : public SimulatedSmm {
 public:
  /// At a loopback address, on that port or, with 0, on a free one. Throws as SimulatedSmm does.
  explicit LargestEnclosure(const std::string& address = "127.0.0.1", std::uint16_t port = 0)
      : SimulatedSmm({"--generation", "2", "--platform", "253", "--address", address, "--port",
                      std::to_string(port)}) {}
};

/// The processor time that the simulators have taken until now, each a launcher and the `ipmi_sim`
/// that it started. Throws std::runtime_error unless `count` of them are all the children that this
/// process's first thread started.
double ProcessorSecondsOfSimulators(std::size_t count);

/// Where a simulated enclosure is found, and with what user.
TavrinConnection::ConnectionInfo SettingsFor(std::uint16_t port);

/// Turns on FreeIPMI's open-session-privilege workaround, without which the simulator refuses
/// sessions.
void ConfigureForSimulator();

/// From now on pauses take their time.
void WaitForPauses();

}  // namespace Tavrin
