#include "tools/smm-inventory/RawOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/FleetReader.h"
#include "fleet/Settings.h"
#include "fleet/Target.h"
#include "report/Format.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/Commands.h"
#include "tools/smm-inventory/GroupLines.h"

namespace Tavrin {
namespace {

constexpr const char* kDescription =
    "Reads multi-node enclosures from their SMMs over IPMI 2.0: identity, power, nodes and PSUs.";

constexpr const char* kCommandsHeading =
    "Commands; smm-inventory COMMAND --help says more of one:\n";

constexpr const char* kFooter = R"(
Enclosures: -H takes names and addresses with commas between them, and numbers in brackets:
rack[01-40], n[1-3,7]:6230, r[1-2]n[1-4], n[1-9/4] with a step, 10.0.0.[1-30], [v6]:port. A line of
a hosts file is such a range and, behind it, key=value for user, password-file, port, cipher-suite,
privilege, workaround, session-timeout and attempts; [NAME] heads a group, # a comment.

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
  smm-inventory -H 'rack[01-40],[2001:db8::10]' --exclude rack07 hosts

Exit codes:
  0    every query succeeded; a PSU slot that gave no usable answer is shown as not read
  1    something was not read; standard error says what, why and what to try next
  2    a wrong option, value or password source; nothing was sent
  3    unexpected error outside the queries
  4    no enclosure was reached
  5    every enclosure refused user name, password or privilege level
  6    health found a fault, whatever else
  130  interrupted, or terminated
With --nagios: 0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN and wrong usage.
)";

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

/// The list, broken behind a comma of its second half, since a terminal shows 80 to 100 columns.
std::string InTwoLines(std::string list) {
  list.replace(list.find(", ", list.size() / 2 - 1) + 1, 1, "\n");
  return list;
}

/// One line a format, for the help.
std::string FormatList() {
  std::string list;
  for (const Format& format : Formats()) {
    list += fmt::format("\n{:<5}  {}", format.name, format.summary);
  }
  return list;
}

void DeclareNaming(CLI::App& app, RawOptions& raw) {
  app.add_option("-H,--host", raw.hosts,
                 "Names or addresses of SMMs, repeatable: host, host:port,\n[v6]:port, "
                 "rack[01-40],n[1-9/4]:6230; @GROUP and @all of\na hosts file")
      ->option_text("RANGE")
      ->allow_extra_args(false);
  app.add_option("--exclude", raw.excludes, "Not these of them, repeatable")
      ->option_text("RANGE")
      ->allow_extra_args(false);
  app.add_option(
         "--hosts-file", raw.hostsFile,
         "File with a range on each line, all of which are taken\nwhere -H names none; - for "
         "standard input")
      ->option_text("FILE");
  app.add_option("-p,--port", raw.port, "UDP port of hosts without one")
      ->option_text(fmt::format("PORT [{}]", kDefaultPort));
}

void DeclareLogin(CLI::App& app, RawOptions& raw) {
  app.add_option(
         "-U,--user", raw.userName,
         "IPMI user name, at most 16 bytes; required unless the hosts\nfile says one for each host")
      ->option_text("NAME");
  app.add_option("--password-file", raw.passwordFile,
                 "File with the password on one line, readable by its\nowner alone; - for standard "
                 "input")
      ->option_text("FILE");
  app.add_option("-C,--cipher-suite", raw.cipherSuite, "One of " + CipherSuiteIds())
      ->option_text("ID [3]");
  app.add_option("-L,--privilege", raw.privilegeLevel, "One of " + PrivilegeNames())
      ->option_text("LEVEL [administrator]");
  app.add_option("-W,--workaround", raw.workarounds,
                 "For controllers that deviate from IPMI 2.0, repeatable; of\n" +
                     InTwoLines(WorkaroundNames()))
      ->option_text("NAME")
      ->allow_extra_args(false);
  app.add_option("--attempts", raw.attempts, "Attempts to connect for each request, in all")
      ->option_text("N [3]");
  app.add_option("--session-timeout", raw.sessionTimeout,
                 "How long the SMM may stay silent before an attempt fails,\n"
                 "from 0.1 to 600; more for one that answers late")
      ->option_text("SECONDS [4.5]");
}

void DeclareReading(CLI::App& app, RawOptions& raw) {
  app.add_option("--fanout", raw.fanout,
                 fmt::format("Enclosures that are read at once, from 1 to {}", kMaxFanout))
      ->option_text(fmt::format("N [{}]", kMaxFanout));
  app.add_option(
         "--timeout", raw.timeout,
         "How long one enclosure may take in all, from 1 to 86400;\nless than 20 is too little "
         "to read anything")
      ->option_text("SECONDS [none]");
  app.add_flag("--no-ping", raw.leavesPresenceOut,
               "Do not ask first, for 3 seconds, whether anybody is there");
}

void DeclareShowing(CLI::App& app, RawOptions& raw) {
  app.add_option("--group-by", raw.groupBy,
                 "Fold enclosures of like value; one of\n" +
                     InTwoLines(fmt::format("{}", fmt::join(GroupFields(), ", "))))
      ->option_text("FIELD");
  app.add_option("--failed-to", raw.failedTo, "Hosts file for those that were not read whole")
      ->option_text("FILE");
  app.add_option(
         "--ignore", raw.ignored,
         "What is known and not to be told again, repeatable:\npsu:9:presence, node:*:status")
      ->option_text("KIND:NUMBER:RULE")
      ->allow_extra_args(false);
  app.add_flag("--nagios", raw.isForNagios,
               "Health of one enclosure as a plugin of a monitoring system");
  app.add_flag("-q,--quiet", raw.isQuiet, "No progress on a terminal");
}

}  // namespace

void Declare(CLI::App& app, RawOptions& raw) {
  app.footer(kCommandsHeading + CommandList() + kFooter);
  app.description(kDescription);
  app.set_version_flag("--version", "smm-inventory " SMM_INVENTORY_VERSION);
  app.formatter(std::make_shared<UsageFormatter>());
  app.allow_extras();
  // Declared first, so that it is refused before any message could quote what follows it.
  app.add_option_function<std::string>("-P,--password", RefusePasswordOption)
      ->expected(0, 1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
      ->group("");
  DeclareNaming(app, raw);
  DeclareLogin(app, raw);
  DeclareReading(app, raw);
  app.add_option("--format", raw.format, "What to print, one of" + FormatList())
      ->option_text(fmt::format("NAME [{}]", Formats().front().name));
  app.add_flag("--json", raw.isJson, "Short for --format json");
  DeclareShowing(app, raw);
  app.add_flag("-v,--verbose", raw.verbosity, "Show more of the log; repeatable");
}

}  // namespace Tavrin
