#include "tools/smm-inventory/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <vector>

#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Host.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/Settings.h"
#include "tools/smm-inventory/UsageError.h"

namespace Tavrin {
namespace {

constexpr const char* kDescription =
    "Reads the identity of a multi-node enclosure from its SMM over IPMI 2.0.";

constexpr const char* kFooter = R"(
Password: the first of --password-file, the environment variable IPMI_PASSWORD and a prompt on the
terminal. It is never taken from the command line, where every user of the machine can read it.

The SMM's status is read six times, three seconds apart: a run takes at least 18 seconds, and 36
with an enclosure of 12 nodes, whose PSU slots take a second status read.

Log: -v shows warnings and errors, -vv also progress, -vvv also every request and answer.

Examples:
  smm-inventory -H 192.0.2.10 -U admin
  smm-inventory -H [2001:db8::10]:6230 -U admin --password-file ~/.smm-password
  pass show smm | smm-inventory -H smm1.example -U admin --password-file - -L operator -v

Exit codes:
  0  everything was read
  1  a query failed; standard error says why and what to try next
  2  a wrong option, value or password source; nothing was sent
  3  unexpected error inside the library or the tool
)";

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
  std::size_t verbosity = 0;
};

[[noreturn]] void RefusePasswordOption(const std::string& /*value*/) {
  throw UsageError(
      "option -P would show the password to every user of this machine; expected --password-file "
      "FILE (- for standard input), the environment variable IPMI_PASSWORD, or the prompt");
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
  app.add_flag("-v,--verbose", raw.verbosity, "Show more of the log; repeatable");
}

std::uint16_t ChoosePort(const std::optional<std::uint16_t>& besideHost, const RawOptions& raw) {
  if (!raw.port) {
    return besideHost.value_or(kDefaultPort);
  }
  const std::uint16_t port = ParsePort(*raw.port);
  if (besideHost && *besideHost != port) {
    throw UsageError(
        fmt::format("port {} contradicts port {} in host \"{}\"; expected the port in one place",
                    port, *besideHost, raw.host));
  }
  return port;
}

void RequireUserName(const std::string& userName) {
  if (userName.empty()) {
    throw UsageError("no user name given; expected --user with an IPMI user name");
  }
  if (userName.size() > kMaxUserNameLength) {
    throw UsageError(fmt::format("user name \"{}\" is {} bytes long; expected at most {} bytes",
                                 Standalone::EscapeControlBytes(userName), userName.size(),
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
  return options;
}

void RefuseUnknown(const CLI::App& app) {
  const std::vector<std::string> unknown = app.remaining();
  if (!unknown.empty()) {
    throw UsageError(
        fmt::format("argument \"{}\" is not known; expected the options that --help lists",
                    Standalone::EscapeControlBytes(unknown.front())));
  }
}

}  // namespace

std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv) {
  CLI::App app(kDescription, "smm-inventory");
  app.footer(kFooter);
  app.set_version_flag("--version", "smm-inventory " SMM_INVENTORY_VERSION);
  app.allow_extras();
  RawOptions raw;
  Declare(app, raw);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return Notice{app.help()};
  } catch (const CLI::CallForVersion& version) {
    return Notice{std::string(version.what()) + '\n'};
  } catch (const CLI::ParseError& error) {
    throw UsageError(
        fmt::format("wrong use of an option ({}); expected each option once and with its value, as "
                    "--help lists them",
                    Standalone::EscapeControlBytes(error.what())));
  }
  RefuseUnknown(app);
  return Interpret(raw);
}

}  // namespace Tavrin
