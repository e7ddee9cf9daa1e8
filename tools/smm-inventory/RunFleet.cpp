#include "tools/smm-inventory/RunFleet.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <vector>

#include "fleet/FleetReader.h"
#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Environment.h"
#include "tools/smm-inventory/FailedHostsFile.h"
#include "tools/smm-inventory/FleetPrinter.h"
#include "tools/smm-inventory/Interrupt.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Output.h"
#include "tools/smm-inventory/Passwords.h"
#include "tools/smm-inventory/terminal/Capabilities.h"

namespace Tavrin {
namespace {

FleetSettings SettingsOf(const Options& options) {
  FleetSettings settings;
  settings.parts = options.Parts();
  settings.psu = options.task.psu;
  settings.fanout = options.fanout;
  settings.timeout = options.timeout;
  settings.asksPresence = options.asksPresence;
  // What is wrong with the environment is an error, and told to everybody.
  settings.logLevel = std::max(options.ShownLogLevel(), Standalone::LogLevel::Error);
  return settings;
}

}  // namespace

int RunFleet(const Options& options) {
  const std::vector<EnclosureSettings> enclosures = SettingsWithPasswords(options.targets);
  RequireFailedHostsFile(options);
  Console console(std::cerr, CanMoveCursor(STDERR_FILENO), STDERR_FILENO);
  CheckEnvironment(options, console);
  FleetPrinter printer(options, console);
  const Interrupt interrupt;
  FleetReader(SettingsOf(options)).Read(enclosures, printer);
  const int exitCode = printer.Finish();
  RequireWholeOutput();
  return exitCode;
}

}  // namespace Tavrin
