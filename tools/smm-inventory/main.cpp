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
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Console.h"
#include "tools/smm-inventory/Enclosure.h"
#include "tools/smm-inventory/Failure.h"
#include "tools/smm-inventory/Generation.h"
#include "tools/smm-inventory/Host.h"
#include "tools/smm-inventory/JsonReport.h"
#include "tools/smm-inventory/LoginGuard.h"
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

/// Routes the library's log into the progress for as long as it lives. The guard looks at each
/// line's moment, since nothing else is called while one operation makes many exchanges.
class LogRoute {
 public:
  LogRoute(Progress& progress, LoginGuard& guard, unsigned int threshold) {
    Standalone::SetLogLineHandler([&](const Standalone::LogLine& line) {
      guard.Look();
      progress.Take(line);
    });
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

/// A setting that an option of the tool or the environment can give; the option wins.
struct Setting {
  const char* key;
  std::optional<int> given;
};

std::vector<Setting> SettingsOf(const Options& options) {
  return {{"IPMI_CIPHER_SUITE", options.cipherSuite},
          {"IPMI_PRIVILEGE_LEVEL", options.privilegeLevel},
          {"IPMI_WORKAROUND_FLAGS", options.workaroundFlags},
          {"IPMI_CONNECT_RETRY_TIMES", options.attempts},
          {"IPMI_SESSION_TIMEOUT_MS", options.sessionTimeoutMs},
          {"IPMI_RETRANSMISSION_TIMEOUT_MS", std::nullopt},
          {"SMM_TYPE", std::nullopt}};
}

void Apply(const std::vector<Setting>& settings) {
  for (const Setting& setting : settings) {
    if (setting.given) {
      Standalone::SetGlobalConfigValue(setting.key, *setting.given);
    }
  }
}

/// Says which defaults the environment replaces. What it holds that is no number replaces none.
void ShowEnvironment(const std::vector<Setting>& settings, Console& console) {
  for (const Setting& setting : settings) {
    const char* const text = std::getenv(setting.key);
    if (!setting.given && text != nullptr && Standalone::ParseStrictly(text)) {
      console.ShowLine(fmt::format("{} is {}, from the environment", setting.key, text));
    }
  }
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

void ReportNothingRead(const Options& options, const std::string& address,
                       const QueryResult<SMMIype>& generation) {
  if (options.isJson) {
    PrintJsonFailure(std::cout, address, generation.status, generation.cause);
  } else {
    std::cout << address << '\n';
    PrintNoSections(std::cout);
  }
  PrintNothingRead(std::cerr, address, generation.status, generation.cause);
}

void RequireWholeOutput() {
  if (!std::cout) {
    throw std::runtime_error("standard output cannot be written");
  }
}

/// The enclosure to be read; empty when its generation cannot be found out. The password is wiped
/// either way, once the library has its copy.
std::optional<Enclosure> Open(TavrinConnection::ConnectionInfo& info, Progress& progress,
                              LoginGuard& guard, QueryResult<SMMIype>& generation) {
  const WipedAtEnd password(info.password);
  generation = FindGeneration(info);
  if (generation.status != StatusCode::Success) {
    return std::nullopt;
  }
  return Enclosure(info, generation.value, progress, guard);
}

int Read(const Options& options, const std::string& address, Enclosure& enclosure) {
  const auto readAndPrint = options.isJson ? ReadAndPrintDocument : ReadAndPrintTables;
  const std::vector<Section> sections = readAndPrint(enclosure, options.task, address);
  PrintFailures(std::cerr, sections);
  return ExitCodeOf(sections);
}

int Run(const Options& options) {
  const std::vector<Setting> settings = SettingsOf(options);
  Apply(settings);
  const std::string address = AddressText(options.host, options.port);
  TavrinConnection::ConnectionInfo info = MakeConnectionInfo(options);
  AskForPassword(options, address, info.password);

  Console console(std::cerr, CanMoveCursor(), STDERR_FILENO);
  Progress progress(console, ShownLogLevel(options.verbosity));
  LoginGuard guard;
  const LogRoute route(progress, guard, std::max(ShownLogLevel(options.verbosity), kInfo));
  if (options.verbosity > 0) {
    ShowEnvironment(settings, console);
  }
  console.ShowLine("connecting to " + address);
  QueryResult<SMMIype> generation;
  std::optional<Enclosure> enclosure = Open(info, progress, guard, generation);
  int exitCode = ExitCode::QueryFailed;
  if (enclosure) {
    exitCode = Read(options, address, *enclosure);
  } else {
    ReportNothingRead(options, address, generation);
  }
  RequireWholeOutput();
  return exitCode;
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
