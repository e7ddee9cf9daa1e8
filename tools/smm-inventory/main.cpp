#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <variant>

#include "fleet/FleetReader.h"
#include "report/Nagios.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/ExitCode.h"
#include "tools/smm-inventory/MemoryImage.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Output.h"
#include "tools/smm-inventory/RunFleet.h"

namespace Tavrin {
namespace {

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
  return RunFleet(options);
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
