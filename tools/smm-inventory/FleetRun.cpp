#include "tools/smm-inventory/FleetRun.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <vector>

#include "fleet/FleetReader.h"
#include "tools/smm-inventory/Environment.h"
#include "tools/smm-inventory/FleetPrinter.h"
#include "tools/smm-inventory/Interrupt.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Output.h"
#include "tools/smm-inventory/Passwords.h"

namespace Tavrin {
namespace {

FleetSettings SettingsOf(const Options& options) {
  FleetSettings settings;
  settings.parts = options.Parts();
  settings.fanout = options.fanout;
  settings.timeout = options.timeout;
  settings.asksPresence = options.asksPresence;
  settings.logLevel = options.ShownLogLevel();
  return settings;
}

}  // namespace

int RunFleet(const Options& options) {
  const std::vector<EnclosureSettings> enclosures = SettingsWithPasswords(options.targets);
  const bool isTerminal = CanMoveCursor();
  Console console(std::cerr, isTerminal, STDERR_FILENO);
  CheckEnvironment(options, console);
  FleetPrinter printer(options, console, isTerminal);
  const Interrupt interrupt;
  FleetReader(SettingsOf(options)).Read(enclosures, printer);
  const int exitCode = printer.Finish();
  RequireWholeOutput();
  if (printer.IsAnyAbandoned()) {
    std::_Exit(exitCode);  // Its thread must not meet what the end of main() destroys.
  }
  return exitCode;
}

}  // namespace Tavrin
