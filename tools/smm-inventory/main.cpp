#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "fleet/Target.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "reading/Enclosure.h"
#include "report/Format.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/ExitCode.h"
#include "tools/smm-inventory/FailureLines.h"
#include "tools/smm-inventory/MemoryImage.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/terminal/Console.h"
#include "tools/smm-inventory/terminal/Progress.h"

namespace Tavrin {
namespace {

bool CanMoveCursor() {
  const char* const terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

/// A setting that the environment can give, unless options and hosts file do.
struct Setting {
  const char* key;
  bool isGiven;
};

std::vector<Setting> SettingsByEnvironment(const Options& options) {
  const auto isGiven = [&options](std::optional<int> TargetSettings::*setting) {
    return std::all_of(options.targets.begin(), options.targets.end(),
                       [&](const Target& target) { return target.settings.*setting; });
  };
  return {{"IPMI_CIPHER_SUITE", isGiven(&TargetSettings::cipherSuite)},
          {"IPMI_PRIVILEGE_LEVEL", isGiven(&TargetSettings::privilegeLevel)},
          {"IPMI_WORKAROUND_FLAGS", isGiven(&TargetSettings::workaroundFlags)},
          {"IPMI_CONNECT_RETRY_TIMES", isGiven(&TargetSettings::attempts)},
          {"IPMI_SESSION_TIMEOUT_MS", isGiven(&TargetSettings::sessionTimeoutMs)},
          {"IPMI_RETRANSMISSION_TIMEOUT_MS", false},
          {"SMM_TYPE", false}};
}

/// Says which defaults the environment replaces. What it holds that is no number replaces none.
void ShowEnvironment(const Options& options, Console& console) {
  for (const Setting& setting : SettingsByEnvironment(options)) {
    const char* const text = std::getenv(setting.key);
    if (!setting.isGiven && text != nullptr && Standalone::ParseStrictly(text)) {
      console.ShowLine(fmt::format("{} is {}, from the environment", setting.key, text));
    }
  }
}

/// Up to which level log lines are shown as they are. The first -v shows warnings beside errors,
/// since errors alone say no more than the tool does in its own words.
unsigned int ShownLogLevel(unsigned int verbosity) {
  return verbosity == 0 ? 0 : std::min(verbosity + 1, Standalone::LogLevel::Debug);
}

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

/// Shows what is malformed about the logger's own environment variable, as all of the environment.
void CheckLogLevel(Progress& progress) {
  const Standalone::ThreadLog log(
      progress.LogLevel(),
      [&progress](const Standalone::LogLine& line) { progress.LineWritten(line); });
  Standalone::SetMinLogLevel(progress.LogLevel());
}

void RequireWholeOutput() {
  if (!std::cout) {
    throw std::runtime_error("standard output cannot be written");
  }
}

int Run(const Options& options) {
  const Target& target = options.targets.front();
  const std::string address = AddressText(target.host, target.port);
  Enclosure enclosure = EnclosureOf(target, address);

  Console console(std::cerr, CanMoveCursor(), STDERR_FILENO);
  Printer printer(*options.format, console, ShownLogLevel(options.verbosity));
  CheckLogLevel(printer);
  if (options.verbosity > 0) {
    ShowEnvironment(options, console);
  }
  console.ShowLine("connecting to " + address);
  const Task& task = options.task;
  const Reading reading = task.psu == 0 ? enclosure.Read(task.command->parts.Parts(), printer)
                                        : enclosure.SelectPsu(task.psu, printer);
  printer.End(reading);
  std::cerr << FailureLines(reading) << std::flush;
  RequireWholeOutput();
  return ExitCodeOf(reading);
}

void RequireOneTarget(const Options& options) {
  if (!options.task.command->AsksNobody() && options.targets.size() > 1) {
    throw UsageError(fmt::format(
        "{} hosts are named, and reading several enclosures is not there yet; expected one",
        options.targets.size()));
  }
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
  RequireOneTarget(options);
  ShowNotes(options);
  return options.task.command->AsksNobody() ? PrintHosts(options) : Run(options);
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  try {
    Tavrin::ForbidMemoryImages();
    return Tavrin::RunCommandLine(argc, argv);
  } catch (const Tavrin::UsageError& error) {
    std::cerr << "smm-inventory: " << error.what() << '\n';
    return Tavrin::ExitCode::WrongUsage;
  } catch (const std::exception& error) {
    std::cerr << "smm-inventory: unexpected error: " << Tavrin::EscapeControlBytes(error.what())
              << '\n';
    return Tavrin::ExitCode::Exception;
  }
}
