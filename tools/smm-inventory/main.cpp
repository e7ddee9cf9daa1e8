#include <fmt/format.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Enclosure.h"
#include "tools/smm-inventory/Failure.h"
#include "tools/smm-inventory/Host.h"
#include "tools/smm-inventory/JsonReport.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/Reading.h"
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

/// A memory image of the tool would hold the password.
void ForbidCoreFiles() {
  const rlimit none{0, 0};
  if (setrlimit(RLIMIT_CORE, &none) != 0) {
    throw std::runtime_error("core files cannot be switched off");
  }
}

bool CanMoveCursor() {
  const char* const terminal = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe)
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

/// Tables are printed as they are read, the document when all is.
std::vector<Section> ReadAndPrint(Enclosure& enclosure, const Options& options,
                                  const std::string& address) {
  std::vector<Section> sections;
  if (options.isJson) {
    ReadSections(enclosure, options.task,
                 [&](const Section& section) { sections.push_back(section); });
    PrintJson(std::cout, address, sections);
    return sections;
  }
  std::cout << address << '\n';
  ReadSections(enclosure, options.task, [&](const Section& section) {
    sections.push_back(section);
    PrintSection(std::cout, section);
  });
  return sections;
}

int Run(const Options& options) {
  ApplySettings(options);
  // The zone of an IPv6 address may hold any byte.
  const std::string address =
      Standalone::EscapeControlBytes(AddressText(options.host, options.port));
  TavrinConnection::ConnectionInfo info = MakeConnectionInfo(options);
  ObtainPassword(options.passwordFile,
                 fmt::format("Password of {} at {}: ",
                             Standalone::EscapeControlBytes(options.userName), address),
                 info.password);

  Console console(std::cerr, CanMoveCursor());
  const unsigned int shownLevel =
      options.verbosity == 0 ? 0 : std::min(options.verbosity + 1, kDebug);
  Progress progress(console, shownLevel);
  const LogRoute route(progress, std::max(shownLevel, kInfo));
  console.ShowLine(fmt::format("connecting to {}; this takes at least 18 seconds", address));
  Enclosure enclosure(info, progress);

  const std::vector<Section> sections = ReadAndPrint(enclosure, options, address);
  PrintFailures(std::cerr, sections);
  if (!std::cout) {
    throw std::runtime_error("standard output cannot be written");
  }
  return ExitCodeOf(sections);
}

int RunCommandLine(int argc, const char* const* argv) {
  const std::variant<Options, Notice> request = ParseCommandLine(argc, argv);
  if (const auto* const notice = std::get_if<Notice>(&request)) {
    std::cout << notice->text << std::flush;
    return ExitCode::Success;
  }
  return Run(std::get<Options>(request));
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  try {
    Tavrin::ForbidCoreFiles();
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
