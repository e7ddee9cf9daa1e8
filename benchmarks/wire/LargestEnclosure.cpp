#include "benchmarks/wire/LargestEnclosure.h"

#include <freeipmi/freeipmi.h>

#include <chrono>
#include <thread>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/doubles/Pauses.h"

namespace Tavrin {

TavrinConnection::ConnectionInfo SettingsFor(std::uint16_t port) {
  TavrinConnection::ConnectionInfo settings;
  settings.address = "127.0.0.1";
  settings.port = port;
  settings.userName = "admin";
  settings.password = "sesame";  // The one that SimulatedSmm chooses unless it is told.
  settings.connectionKind = 7;
  return settings;
}

void ConfigureForSimulator() {
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS",
                                   IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_OPEN_SESSION_PRIVILEGE);
}

void WaitForPauses() {
  Double::onPause = [](unsigned int seconds) {
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return 0U;
  };
}

}  // namespace Tavrin
