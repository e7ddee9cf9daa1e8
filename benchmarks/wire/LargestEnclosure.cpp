#include "benchmarks/wire/LargestEnclosure.h"

#include <freeipmi/freeipmi.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/doubles/Pauses.h"

namespace Tavrin {
namespace {

double ProcessorSecondsOf(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) {
    throw std::runtime_error("a simulator is gone");
  }
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

double ProcessorSecondsOfSimulators(std::size_t count) {
  const std::vector<pid_t> launchers = ChildrenOf(getpid());
  if (launchers.size() != count) {
    throw std::runtime_error("not all simulators are found among this process's children");
  }
  double sum = 0;
  for (const pid_t launcher : launchers) {
    sum += ProcessorSecondsOf(launcher);
    for (const pid_t simulator : ChildrenOf(launcher)) {
      sum += ProcessorSecondsOf(simulator);
    }
  }
  return sum;
}

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
