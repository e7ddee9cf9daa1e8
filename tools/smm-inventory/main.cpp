#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <variant>

#include "fleet/FleetReader.h"
#include "reading/Enclosure.h"
#include "report/Format.h"
#include "report/Nagios.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/Ending.h"
#include "tools/smm-inventory/Environment.h"
#include "tools/smm-inventory/ExitCode.h"
#include "tools/smm-inventory/FailureLines.h"
#include "tools/smm-inventory/FleetRun.h"
#include "tools/smm-inventory/MemoryImage.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Output.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/terminal/Console.h"
#include "tools/smm-inventory/terminal/Progress.h"

namespace Tavrin {
namespace {

/// The enclosure, with the password that the user gives for it.
Enclosure EnclosureOf(const Target& target, const std::string& address) {
  EnclosureSettings settings;
  Apply(target, settings);
  const std::string prompt =
      fmt::format("Password of {} at {}: ", EscapeControlBytes(settings.userName), address);
  ObtainPassword(target.settings.passwordFile, prompt, settings.password);
  return Enclosure(settings);
}

/// Prints each part as soon as it is read, and shows progress meanwhile.
class Printer : public Progress {
 public:
  Printer(const Format& format, Console& console, unsigned int shownLevel)
      : Progress(console, shownLevel), format_(format) {}

  void PartRead(const Reading& soFar, Part part) override {
    Begin(soFar);
    std::cout << format_.part(soFar, part) << std::flush;
  }

  void End(const Reading& reading) {
    Begin(reading);
    std::cout << format_.end(reading, {SMM_INVENTORY_VERSION}) << std::flush;
  }

 private:
  void Begin(const Reading& soFar) {
    if (!hasBegun_) {
      std::cout << format_.begin(soFar.address);
      hasBegun_ = true;
    }
  }

  const Format& format_;
  bool hasBegun_ = false;
};

int Run(const Options& options) {
  const Target& target = options.targets.front();
  const std::string address = AddressText(target.host, target.port);
  Enclosure enclosure = EnclosureOf(target, address);

  Console console(std::cerr, CanMoveCursor(), STDERR_FILENO);
  Printer printer(*options.format, console, options.ShownLogLevel());
  CheckEnvironment(options, console);
  console.ShowLine("connecting to " + address);
  const Task& task = options.task;
  const Reading reading = task.psu == 0 ? enclosure.Read(task.command->parts.Parts(), printer)
                                        : enclosure.SelectPsu(task.psu, printer);
  printer.End(reading);
  std::cerr << FailureLines(reading) << std::flush;
  RequireWholeOutput();
  return ExitCodeOf({EndingOf(reading)});
}

void ShowNotes(const Options& options) {
  for (const std::string& note : options.notes) {
    std::cerr << "smm-inventory: " << note << '\n';
  }
}

int PrintHosts(const Options& options) {
  for (const Target& target : options.targets) {
    std::cout << AddressText(target.host, target.port) << '\n';
  }
  std::cout << std::flush;
  RequireWholeOutput();
  return ExitCode::Success;
}

int RunCommandLine(int argc, const char* const* argv) {
  const std::variant<Options, Notice> request = ParseCommandLine(argc, argv);
  if (const auto* const notice = std::get_if<Notice>(&request)) {
    std::cout << notice->text << std::flush;
    RequireWholeOutput();
    return ExitCode::Success;
  }
  const auto& options = std::get<Options>(request);
  ShowNotes(options);
  if (options.task.command->AsksNobody()) {
    return PrintHosts(options);
  }
  return options.IsForFleet() ? RunFleet(options) : Run(options);
}

/// A monitoring system shows what stands on standard output, and takes every code but its own for a
/// fault of the plugin.
int Refuse(const UsageError& error, int argc, const char* const* argv) {
  if (IsForNagios(argc, argv)) {
    std::cout << NagiosProblemLine(error.what());
    return NagiosExitCode(Severity::Unknown);
  }
  std::cerr << "smm-inventory: " << error.what() << '\n';
  return ExitCode::WrongUsage;
}

int RunToTheEnd(int argc, const char* const* argv) {
  try {
    ForbidMemoryImages();
    return RunCommandLine(argc, argv);
  } catch (const UsageError& error) {
    return Refuse(error, argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "smm-inventory: unexpected error: " << EscapeControlBytes(error.what()) << '\n';
    return ExitCode::Exception;
  }
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  const int exitCode = Tavrin::RunToTheEnd(argc, argv);
  if (Tavrin::CountFleetThreads() > 0) {
    std::_Exit(exitCode);  // They must not meet what the end of main() destroys.
  }
  return exitCode;
}
