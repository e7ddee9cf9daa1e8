#include "tools/smm-inventory/FleetRun.h"

#include <fmt/format.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "fleet/FleetReader.h"
#include "support/EscapeControlBytes.h"
#include "support/UsageError.h"
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
  settings.psu = options.task.psu;
  settings.fanout = options.fanout;
  settings.timeout = options.timeout;
  settings.asksPresence = options.asksPresence;
  settings.logLevel = options.ShownLogLevel();
  return settings;
}

/// Leaves what is in the file until there is something to put in its place.
void RequireWritable(const std::optional<std::string>& path) {
  if (path && !std::ofstream(*path, std::ios::app)) {
    throw UsageError(fmt::format("--failed-to is \"{}\", which cannot be written; expected a file",
                                 EscapeControlBytes(*path)));
  }
}

}  // namespace

int RunFleet(const Options& options) {
  RequireWritable(options.failedTo);
  const std::vector<EnclosureSettings> enclosures = SettingsWithPasswords(options.targets);
  Console console(std::cerr, CanMoveCursor(), STDERR_FILENO);
  CheckEnvironment(options, console);
  FleetPrinter printer(options, console);
  const Interrupt interrupt;
  FleetReader(SettingsOf(options)).Read(enclosures, printer);
  const int exitCode = printer.Finish();
  RequireWholeOutput();
  return exitCode;
}

}  // namespace Tavrin
