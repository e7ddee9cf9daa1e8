#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Console.h"
#include "tools/smm-inventory/Enclosure.h"
#include "tools/smm-inventory/Failure.h"
#include "tools/smm-inventory/Host.h"
#include "tools/smm-inventory/JsonReport.h"
#include "tools/smm-inventory/MemoryImage.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/Progress.h"
#include "tools/smm-inventory/Reading.h"
#include "tools/smm-inventory/Section.h"
#include "tools/smm-inventory/TextReport.h"
#include "tools/smm-inventory/UsageError.h"

namespace Tavrin {
namespace {

// IPMI exchanges are admitted on kinds 1 and 7; 7 is what management tools use.
constexpr std::int32_t kConnectionKind = 7;

// The levels of the log: progress is taken from info lines, requests and answers are debug lines.
constexpr unsigned int kInfo = 3;
constexpr unsigned int kDebug = 4;

/// Routes the library's log into the progress for as long as it lives.
class LogRoute {
 public:
  LogRoute(Progress& progress, unsigned int threshold) {
    Standalone::SetLogLineHandler(
        [&progress](const Standalone::LogLine& line) { progress.Take(line); });
    Standalone::SetMinLogLevel(threshold);
  }
  ~LogRoute() { Standalone::SetLogLineHandler({}); }
  LogRoute(const LogRoute&) = delete;
  LogRoute& operator=(const LogRoute&) = delete;
};

bool CanMoveCursor() {
  const char* const terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void ApplySettings(const Options& options) {
  const auto set = [](const char* key, const std::optional<int>& value) {
    if (value) {
      Standalone::SetGlobalConfigValue(key, *value);
    }
  };
  set("IPMI_CIPHER_SUITE", options.cipherSuite);
  set("IPMI_PRIVILEGE_LEVEL", options.privilegeLevel);
  set("IPMI_WORKAROUND_FLAGS", options.workaroundFlags);
}

TavrinConnection::ConnectionInfo MakeConnectionInfo(const Options& options) {
  TavrinConnection::ConnectionInfo info;
  info.address = options.host;
  info.port = options.port;
  info.userName = options.userName;
  info.connectionKind = kConnectionKind;
  return info;
}

void AskForPassword(const Options& options, const std::string& address, std::string& password) {
  const std::string prompt = fmt::format(
      "Password of {} at {}: ", Standalone::EscapeControlBytes(options.userName), address);
  ObtainPassword(options.passwordFile, prompt, password);
}

/// Up to which level log lines are shown as they are. The first -v shows warnings beside errors,
/// since errors alone say no more than the tool does in its own words.
unsigned int ShownLogLevel(unsigned int verbosity) {
  return verbosity == 0 ? 0 : std::min(verbosity + 1, kDebug);
}

std::vector<Section> ReadAndPrintTables(Enclosure& enclosure, const Task& task,
                                        const std::string& address) {
  std::vector<Section> sections;
  std::cout << address << '\n';
  ReadSections(enclosure, task, [&](const Section& section) {
    sections.push_back(section);
    PrintSection(std::cout, section);
  });
  return sections;
}

std::vector<Section> ReadAndPrintDocument(Enclosure& enclosure, const Task& task,
                                          const std::string& address) {
  std::vector<Section> sections;
  ReadSections(enclosure, task, [&](const Section& section) { sections.push_back(section); });
  PrintJson(std::cout, address, sections);
  return sections;
}

void RequireWholeOutput() {
  if (!std::cout) {
    throw std::runtime_error("standard output cannot be written");
  }
}

int Run(const Options& options) {
  ApplySettings(options);
  const std::string address = AddressText(options.host, options.port);
  TavrinConnection::ConnectionInfo info = MakeConnectionInfo(options);
  AskForPassword(options, address, info.password);

  Console console(std::cerr, CanMoveCursor(), STDERR_FILENO);
  Progress progress(console, ShownLogLevel(options.verbosity));
  const LogRoute route(progress, std::max(ShownLogLevel(options.verbosity), kInfo));
  console.ShowLine(fmt::format("connecting to {}; this takes at least 18 seconds", address));
  Enclosure enclosure(info, progress);

  const auto readAndPrint = options.isJson ? ReadAndPrintDocument : ReadAndPrintTables;
  const std::vector<Section> sections = readAndPrint(enclosure, options.task, address);
  PrintFailures(std::cerr, sections);
  RequireWholeOutput();
  return ExitCodeOf(sections);
}

int RunCommandLine(int argc, const char* const* argv) {
  const std::variant<Options, Notice> request = ParseCommandLine(argc, argv);
  if (const auto* const notice = std::get_if<Notice>(&request)) {
    std::cout << notice->text << std::flush;
    RequireWholeOutput();
    return ExitCode::Success;
  }
  return Run(std::get<Options>(request));
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
    std::cerr << "smm-inventory: unexpected error: "
              << Tavrin::Standalone::EscapeControlBytes(error.what()) << '\n';
    return Tavrin::ExitCode::Exception;
  }
}
