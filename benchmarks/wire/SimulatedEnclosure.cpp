#include "benchmarks/wire/SimulatedEnclosure.h"

#include <freeipmi/freeipmi.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/standalone/globalconfig/ConfigControl.h"

namespace {

std::atomic<unsigned int> pausedSeconds{0};
std::atomic<bool> areWaitedFor{false};

}  // namespace

/// Takes the place of the C library's.
extern "C" unsigned int sleep(unsigned int seconds) {
  pausedSeconds += seconds;
  if (areWaitedFor) {
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
  }
  return 0;
}

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

unsigned int PausedSeconds() { return pausedSeconds; }

void WaitForPauses() { areWaitedFor = true; }

}  // namespace Tavrin
