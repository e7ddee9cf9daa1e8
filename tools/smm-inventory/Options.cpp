#include "tools/smm-inventory/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/standalone/StrictNumber.h"
#include "reading/EnclosureSettings.h"
#include "report/Format.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "fleet/Settings.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

constexpr const char* kDescription =
    "Reads a multi-node enclosure from its SMM over IPMI 2.0: identity, power, nodes and PSUs.";

constexpr const char* kCommandsHeading =
    "Commands; smm-inventory COMMAND --help says more of one:\n";

constexpr const char* kFooter = R"(
Password: the first of --password-file, the environment variable IPMI_PASSWORD and a prompt on the
terminal. It is never taken from the command line, where every user of the machine can read it.

A user name or password that the SMM refuses is not sent again in the same run. An SMM that cannot
be reached, or does not tell its generation, is not asked anything else.

The SMM's status is read six times, three seconds apart: a run takes at least 18 seconds, and as
much again where a second-generation SMM does not tell its platform. So does select-psu in addition
where the SMM does not acknowledge.

Log: -v shows warnings and errors, and settings that come from the environment; -vv also progress,
-vvv also every request and answer.

Examples:
  smm-inventory -H 192.0.2.10 -U admin
  smm-inventory -H [2001:db8::10]:6230 -U admin --password-file ~/.smm-password psus
  pass show smm | smm-inventory -H smm1.example -U admin --password-file - --json power

Exit codes:
  0  every query succeeded; a PSU slot that gave no usable answer is shown as not read
  1  a query failed, or nothing could be asked; standard error says why and what to try next
  2  a wrong option, value or password source; nothing was sent
  3  unexpected error outside the queries
)";

constexpr int kLowestPsu = 1;
constexpr int kHighestPsu = 9;

/// The options as they stand on the command line. Their values are read by parsers of our own,
/// since a refusal is to name the thing, the value and what was expected.
struct RawOptions {
  std::string host;
  std::optional<std::string> port;
  std::string userName;
  std::optional<std::string> passwordFile;
  std::optional<std::string> cipherSuite;
  std::optional<std::string> privilegeLevel;
  std::vector<std::string> workarounds;
  std::optional<std::string> attempts;
  std::optional<std::string> sessionTimeout;
  std::optional<std::string> format;
  bool isJson = false;
  std::size_t verbosity = 0;
};

class UsageFormatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* /*app*/, std::string name) const override {
    return fmt::format("Usage: {} [OPTIONS] [COMMAND]\n", name);
  }
};

[[noreturn]] void RefusePasswordOption(const std::string& /*value*/) {
  throw UsageError(
      "option -P would show the password to every user of this machine; expected --password-file "
      "FILE (- for standard input), the environment variable IPMI_PASSWORD, or the prompt");
}

std::string FormatNames() {
  std::vector<std::string_view> names;
  for (const Format& format : Formats()) {
    names.push_back(format.name);
  }
  return fmt::format("{}", fmt::join(names, ", "));
}

/// One line a format, for the help.
std::string FormatList() {
  std::string list;
  for (const Format& format : Formats()) {
    list += fmt::format("\n{:<4}  {}", format.name, format.summary);
  }
  return list;
}

void Declare(CLI::App& app, RawOptions& raw) {
  // Declared first, so that it is refused before any message could quote what follows it.
  app.add_option_function<std::string>("-P,--password", RefusePasswordOption)
      ->expected(0, 1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
      ->group("");
  app.add_option("-H,--host", raw.host, "Name or address of the SMM: host, host:port, [v6]:port")
      ->option_text("HOST (required)");
  app.add_option("-p,--port", raw.port, "UDP port")
      ->option_text(fmt::format("PORT [{}]", kDefaultPort));
  app.add_option("-U,--user", raw.userName, "IPMI user name, at most 16 bytes")
      ->option_text("NAME (required)");
  app.add_option("--password-file", raw.passwordFile,
                 "File with the password on one line, readable by its\nowner alone; - for standard "
                 "input")
      ->option_text("FILE");
  app.add_option("-C,--cipher-suite", raw.cipherSuite, "One of " + CipherSuiteIds())
      ->option_text("ID [3]");
  app.add_option("-L,--privilege", raw.privilegeLevel, "One of " + PrivilegeNames())
      ->option_text("LEVEL [administrator]");
  app.add_option("-W,--workaround", raw.workarounds,
                 "For controllers that deviate from IPMI 2.0, repeatable; of\n" + WorkaroundNames())
      ->option_text("NAME")
      ->allow_extra_args(false);
  app.add_option("--attempts", raw.attempts, "Attempts to connect for each request, in all")
      ->option_text("N [3]");
  app.add_option("--session-timeout", raw.sessionTimeout,
                 "How long the SMM may stay silent before an attempt fails,\n"
                 "from 0.1 to 600; more for one that answers late")
      ->option_text("SECONDS [4.5]");
  app.add_option("--format", raw.format, "What to print, one of" + FormatList())
      ->option_text(fmt::format("NAME [{}]", Formats().front().name));
  app.add_flag("--json", raw.isJson, "Short for --format json");
  app.add_flag("-v,--verbose", raw.verbosity, "Show more of the log; repeatable");
}

/// The parser takes a flag's value for a count, "true" and negative numbers among them.
void RefuseFlagValues(int argc, const char* const* argv) {
  for (const std::string_view argument :
       std::vector<std::string_view>(argv, std::next(argv, argc))) {
    const std::string_view start = argument.substr(0, argument.find('=') + 1);
    if (start == "--json=" || start == "--verbose=") {
      throw UsageError(fmt::format("argument is \"{}\"; expected the option without a value",
                                   EscapeControlBytes(std::string(argument))));
    }
  }
}

[[noreturn]] void RefuseUse(const std::exception& error) {
  throw UsageError(
      fmt::format("wrong use of an option ({}); expected each option once, and with a value where "
                  "--help lists one",
                  EscapeControlBytes(error.what())));
}

std::uint16_t ChoosePort(const std::optional<std::uint16_t>& besideHost, const RawOptions& raw) {
  if (!raw.port) {
    return besideHost.value_or(kDefaultPort);
  }
  const std::uint16_t port = ParsePort(*raw.port);
  if (besideHost && *besideHost != port) {
    throw UsageError(fmt::format(R"(port is "{}" and host is "{}"; expected the port in one place)",
                                 EscapeControlBytes(*raw.port), EscapeControlBytes(raw.host)));
  }
  return port;
}

const Format* ChooseFormat(const RawOptions& raw) {
  const std::string json = "json";
  const std::string name =
      raw.format.value_or(raw.isJson ? json : std::string(Formats().front().name));
  const Format* const format = FindFormat(name);
  if (format == nullptr) {
    throw UsageError(fmt::format("format is \"{}\"; expected one of {}", EscapeControlBytes(name),
                                 FormatNames()));
  }
  if (raw.isJson && name != json) {
    throw UsageError(
        fmt::format("--format is \"{}\" and --json is given; expected only one of them", name));
  }
  return format;
}

void RequireUserName(const std::string& userName) {
  if (userName.empty()) {
    throw UsageError("no user name given; expected --user with an IPMI user name");
  }
  if (userName.size() > kMaxUserNameLength) {
    throw UsageError(fmt::format("user name is \"{}\", {} bytes long; expected at most {} bytes",
                                 EscapeControlBytes(userName), userName.size(),
                                 kMaxUserNameLength));
  }
}

Options Interpret(const RawOptions& raw) {
  if (raw.host.empty()) {
    throw UsageError("no host given; expected --host with a host name or an address");
  }
  RequireUserName(raw.userName);
  const HostAndPort place = ParseHost(raw.host);
  Options options;
  options.host = place.host;
  options.port = ChoosePort(place.port, raw);
  options.userName = raw.userName;
  options.passwordFile = raw.passwordFile;
  options.format = ChooseFormat(raw);
  options.verbosity = static_cast<unsigned int>(raw.verbosity);
  if (raw.cipherSuite) {
    options.cipherSuite = ParseCipherSuite(*raw.cipherSuite);
  }
  if (raw.privilegeLevel) {
    options.privilegeLevel = ParsePrivilege(*raw.privilegeLevel);
  }
  if (!raw.workarounds.empty()) {
    options.workaroundFlags = ParseWorkarounds(raw.workarounds);
  }
  if (raw.attempts) {
    options.attempts = ParseAttempts(*raw.attempts);
  }
  if (raw.sessionTimeout) {
    options.sessionTimeoutMs = ParseSessionTimeout(*raw.sessionTimeout);
  }
  return options;
}

int ParsePsu(const std::string& text) {
  const std::optional<int> psu = Standalone::ParseStrictly(text);
  if (!psu || *psu < kLowestPsu || *psu > kHighestPsu) {
    throw UsageError(fmt::format("PSU is \"{}\"; expected a whole number from {} to {}",
                                 EscapeControlBytes(text), kLowestPsu, kHighestPsu));
  }
  return *psu;
}

[[noreturn]] void RefuseArgument(const std::string& argument, const std::string& suggestion) {
  throw UsageError(
      fmt::format("argument is \"{}\"; expected one command, and the options that --help lists{}",
                  EscapeControlBytes(argument),
                  suggestion.empty() ? "" : fmt::format("; did you mean {}?", suggestion)));
}

/// Reads the command and what belongs to it from the words that are no options. A negative number
/// is among them, too.
Task ParseTask(const std::vector<std::string>& words) {
  if (words.empty()) {
    return {&Commands().front(), 0};
  }
  Task task{FindCommand(words[0]), 0};
  if (task.command == nullptr) {
    RefuseArgument(words[0], LikeliestCommand(words[0]));
  }
  std::size_t known = 1;
  if (!task.command->argument.empty()) {
    if (words.size() == known) {
      throw UsageError(fmt::format("no PSU given; expected select-psu with a number from {} to {}",
                                   kLowestPsu, kHighestPsu));
    }
    task.psu = ParsePsu(words[known]);
    ++known;
  }
  if (words.size() > known) {
    RefuseArgument(words[known], "");
  }
  return task;
}

/// The help on the command that is among the words, or on all.
Notice Help(const CLI::App& app) {
  const std::vector<std::string> words = app.remaining();
  const Command* const command = words.empty() ? nullptr : FindCommand(words[0]);
  return {command == nullptr ? app.help() : CommandHelp(*command)};
}

}  // namespace

std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv) {
  CLI::App app(kDescription, "smm-inventory");
  app.footer(kCommandsHeading + CommandList() + kFooter);
  app.set_version_flag("--version", "smm-inventory " SMM_INVENTORY_VERSION);
  app.formatter(std::make_shared<UsageFormatter>());
  app.allow_extras();
  RawOptions raw;
  Declare(app, raw);
  RefuseFlagValues(argc, argv);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return Help(app);
  } catch (const CLI::CallForVersion& version) {
    return Notice{std::string(version.what()) + '\n'};
  } catch (const UsageError&) {
    throw;
  } catch (const std::exception& error) {
    RefuseUse(error);
  }
  const Task task = ParseTask(app.remaining());
  Options options = Interpret(raw);
  options.task = task;
  return options;
}

}  // namespace Tavrin
