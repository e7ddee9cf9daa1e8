#include "tools/smm-inventory/Options.h"

#include <gmock/gmock.h>

#include <chrono>
#include <sstream>
#include <utility>
#include <vector>

#include "report/Format.h"
#include "support/HostAndPort.h"
#include "support/TemporaryFile.h"
#include "tests/support/Content.h"
#include "tests/support/Refusal.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Arguments = std::vector<const char*>;

std::variant<Options, Notice> Parse(Arguments arguments) {
  arguments.insert(arguments.begin(), "smm-inventory");
  return ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

Options ParseOptions(const Arguments& arguments) { return std::get<Options>(Parse(arguments)); }

std::vector<std::string> PlacesOf(const Options& options) {
  std::vector<std::string> places;
  for (const Target& target : options.targets) {
    places.push_back(AddressText(target.host, target.port));
  }
  return places;
}

std::string Refusal(const Arguments& arguments) {
  return RefusalOf([&] { Parse(arguments); });
}

TEST(Options, HostAndUserAloneLeaveTheDefaults) {
  const Options options = ParseOptions({"-H", "smm1", "-U", "admin"});
  EXPECT_THAT(PlacesOf(options), ElementsAre("smm1:623"));
  const TargetSettings& settings = options.targets.front().settings;
  EXPECT_EQ(settings.userName, "admin");
  EXPECT_EQ(settings.passwordFile, std::nullopt);
  EXPECT_EQ(settings.cipherSuite, std::nullopt);
  EXPECT_EQ(settings.privilegeLevel, std::nullopt);
  EXPECT_EQ(settings.workaroundFlags, std::nullopt);
  EXPECT_EQ(settings.attempts, std::nullopt);
  EXPECT_EQ(settings.sessionTimeoutMs, std::nullopt);
  EXPECT_EQ(options.verbosity, 0U);
  EXPECT_EQ(options.task.command, FindCommand("all"));
  EXPECT_EQ(options.format, &Formats().front());
}

TEST(Options, LongFormsAreTaken) {
  const Options options =
      ParseOptions({"--host=smm1", "--port", "6230", "--user", "admin", "--password-file", "-",
                    "--cipher-suite", "17", "--privilege", "operator", "--workaround",
                    "open-session-privilege", "--workaround", "no-checksum-check", "--verbose"});
  EXPECT_THAT(PlacesOf(options), ElementsAre("smm1:6230"));
  const TargetSettings& settings = options.targets.front().settings;
  EXPECT_EQ(settings.passwordFile, "-");
  EXPECT_EQ(settings.cipherSuite, 17);
  EXPECT_EQ(settings.privilegeLevel, 3);
  EXPECT_EQ(settings.workaroundFlags, 0x50);
  EXPECT_EQ(options.verbosity, 1U);
}

struct CommandRow {
  Arguments words;
  std::string name;
  int psu;
};

TEST(Options, CommandIsTakenBeforeAndAfterTheOptions) {
  const std::vector<CommandRow> table = {
      {{}, "all", 0},
      {{"all"}, "all", 0},
      {{"identity"}, "identity", 0},
      {{"psus"}, "psus", 0},
      {{"select-psu", "1"}, "select-psu", 1},
      {{"select-psu", "9"}, "select-psu", 9},
  };
  const Arguments rest = {"-H", "a", "--json", "-U", "u", "-W", "no-checksum-check"};
  for (const CommandRow& row : table) {
    Arguments before = row.words;
    before.insert(before.end(), rest.begin(), rest.end());
    Arguments after = rest;
    after.insert(after.end(), row.words.begin(), row.words.end());
    for (const Arguments& arguments : {before, after}) {
      const Options options = ParseOptions(arguments);
      EXPECT_EQ(options.task.command, FindCommand(row.name));
      EXPECT_EQ(options.task.psu, row.psu);
      EXPECT_EQ(options.targets.front().settings.workaroundFlags, 0x40);
      EXPECT_EQ(options.format, FindFormat("json"));
    }
  }
}

TEST(Options, OptionsMayStandBetweenTheCommandAndItsNumber) {
  const Options options = ParseOptions({"select-psu", "-H", "a", "-U", "u", "-v", "3"});
  EXPECT_EQ(options.task.psu, 3);
  EXPECT_EQ(options.verbosity, 1U);
}

TEST(Options, NumberOfThePsuIsReadStrictlyAndWithinTheSlots) {
  const Arguments table = {"x",  "",    "1x",  "+1", " 1", "1 ", "0x1", "1.0",       "-x",
                           "--", "1e1", "- 1", "0",  "10", "-1", "-9",  "2147483648"};
  for (const char* text : table) {
    EXPECT_EQ(Refusal({"-H", "a", "-U", "u", "select-psu", text}),
              std::string("PSU is \"") + text + "\"; expected a whole number from 1 to 9");
  }
}

TEST(Options, AttemptsAndSessionTimeoutAreTaken) {
  const Options options =
      ParseOptions({"-H", "a", "-U", "u", "--attempts", "1", "--session-timeout=2.5"});
  const TargetSettings& settings = options.targets.front().settings;
  EXPECT_EQ(settings.attempts, 1);
  EXPECT_EQ(settings.sessionTimeoutMs, 2500);
}

TEST(Options, FanoutTimeoutAndPresenceAreTaken) {
  const Options few = ParseOptions({"-H", "a", "-U", "u", "--fanout", "2", "--timeout", "86400"});
  EXPECT_EQ(few.fanout, 2U);
  EXPECT_EQ(few.timeout, std::chrono::hours(24));
  EXPECT_TRUE(few.asksPresence);
  const Options many = ParseOptions({"-H", "a", "-U", "u", "--fanout=1000", "--no-ping"});
  EXPECT_EQ(many.fanout, 1000U);
  EXPECT_EQ(many.timeout, std::nullopt);
  EXPECT_FALSE(many.asksPresence);
}

/// What is refused of an option beside a command that it would not change.
void ExpectRefusalBeside(Arguments command, const std::vector<Arguments>& options) {
  const std::string name = command.front();
  for (const Arguments& option : options) {
    Arguments arguments = {"-H", "a", "-U", "u"};
    arguments.insert(arguments.end(), option.begin(), option.end());
    arguments.insert(arguments.end(), command.begin(), command.end());
    EXPECT_EQ(Refusal(arguments), option.front() + (" is given with the command " + name) +
                                      "; expected it with one that reads");
  }
}

TEST(Options, CommandThatReadsNothingTakesNothingOfReading) {
  const std::vector<Arguments> ofReading = {{"--ignore", "psu:9:presence"},
                                            {"--fanout", "2"},
                                            {"--timeout", "40"},
                                            {"--failed-to", "/nowhere/failed"}};
  ExpectRefusalBeside({"select-psu", "1"}, ofReading);
  ExpectRefusalBeside({"hosts"}, ofReading);
  ExpectRefusalBeside({"hosts"}, {{"--format", "text"}, {"--json"}, {"--no-ping"}});
}

TEST(Options, WordLikeACommandGetsASuggestion) {
  const auto refusal = [](const char* word) { return Refusal({"-H", "a", "-U", "u", word}); };
  EXPECT_EQ(
      refusal("powr"),
      "argument is \"powr\"; expected one command, and the options that --help lists; did you "
      "mean power?");
  EXPECT_THAT(refusal("stray"), testing::EndsWith("that --help lists"));
  EXPECT_THAT(Refusal({"-H", "a", "-U", "u", "power", "cap"}), Not(HasSubstr("did you mean")));
}

TEST(Options, EachFormatIsTakenByItsName) {
  for (const Format& format : Formats()) {
    const std::string name(format.name);
    EXPECT_EQ(ParseOptions({"-H", "a", "-U", "u", "--format", name.c_str()}).format, &format);
  }
}

TEST(Options, JsonIsShortForTheFormatOfThatName) {
  const Format* const json = FindFormat("json");
  EXPECT_EQ(ParseOptions({"-H", "a", "-U", "u", "--json"}).format, json);
  EXPECT_EQ(ParseOptions({"-H", "a", "-U", "u", "--json", "--format", "json"}).format, json);
}

TEST(Options, JsonBesideAnotherFormatIsRefused) {
  for (const char* const name : {"text", "csv"}) {
    EXPECT_EQ(
        Refusal({"-H", "a", "-U", "u", "--json", "--format", name}),
        "--format is \"" + std::string(name) + "\" and --json is given; expected only one of them");
  }
}

TEST(Options, UnknownFormatIsRefusedWithThoseThereAre) {
  std::string names;
  for (const Format& format : Formats()) {
    names += (names.empty() ? "" : ", ") + std::string(format.name);
  }
  EXPECT_EQ(Refusal({"-H", "a", "-U", "u", "--format", "xm\x1b"}),
            "format is \"xm\\x1b\"; expected one of " + names);
}

TEST(Options, HelpListsEachFormat) {
  const std::string help = std::get<Notice>(Parse({"--help"})).text;
  EXPECT_THAT(help, testing::ContainsRegex("--format NAME \\[text\\] "));
  for (const Format& format : Formats()) {
    EXPECT_THAT(help, HasSubstr(' ' + std::string(format.name) + ' '));
    EXPECT_THAT(help, HasSubstr(std::string(format.summary) + '\n'));
  }
}

TEST(Options, ReadmeListsTheFormatsThatThereAre) {
  std::string rows;
  for (const Format& format : Formats()) {
    rows += "| `" + std::string(format.name) + "` | " + std::string(format.summary) + " |\n";
  }
  EXPECT_THAT(ContentOf(README), HasSubstr("\n| Format | What it is |\n|---|---|\n" + rows + "\n"));
}

TEST(Options, RepeatedVerboseIsCounted) {
  EXPECT_EQ(ParseOptions({"-H", "a", "-U", "u", "-vvv"}).verbosity, 3U);
  EXPECT_EQ(ParseOptions({"-v", "-H", "a", "-v", "-U", "u"}).verbosity, 2U);
}

TEST(Options, FlagWithAValueIsRefused) {
  const Arguments table = {"--verbose=",
                           "--verbose=-1",
                           "--verbose=0",
                           "--verbose=1",
                           "--verbose=1.5",
                           "--verbose=true",
                           "--verbose=x",
                           "--json=false",
                           "--json=true",
                           "--json=1",
                           "--quiet=",
                           "--quiet=true",
                           "--nagios=",
                           "--nagios=1",
                           "--no-ping=",
                           "--no-ping=false",
                           "--verbose=99999999999999999999"};
  for (const char* argument : table) {
    SCOPED_TRACE(argument);
    EXPECT_EQ(Refusal({"-H", "a", "-U", "u", argument}),
              "argument is \"" + std::string(argument) + "\"; expected the option without a value");
  }
}

TEST(Options, PortIsTakenFromEitherPlace) {
  const std::vector<std::pair<Arguments, std::string>> table = {
      {{"-H", "a:6230", "-U", "u"}, "a:6230"},
      {{"-H", "a", "-p", "6230", "-U", "u"}, "a:6230"},
      {{"-H", "a:6230", "-p", "6230", "-U", "u"}, "a:6230"},
      {{"-H", "[::1]:6230", "-U", "u"}, "[::1]:6230"},
      {{"-H", "[::1]", "-U", "u"}, "[::1]:623"},
  };
  for (const auto& [arguments, place] : table) {
    EXPECT_THAT(PlacesOf(ParseOptions(arguments)), ElementsAre(place));
  }
}

TEST(Options, HostsAreRangesOnARepeatableOption) {
  const Options options =
      ParseOptions({"-H", "rack[09-10],b:7", "-U", "u", "--host=[::1]", "--exclude", "rack10",
                    "--exclude", "x,y", "psus", "-H", "c,b:7"});
  EXPECT_THAT(PlacesOf(options), ElementsAre("rack09:623", "b:7", "[::1]:623", "c:623"));
  EXPECT_THAT(options.notes, ElementsAre("named more than once and asked once: b:7"));
  EXPECT_EQ(options.task.command, FindCommand("psus"));
}

TEST(Options, EachTargetHasTheSettingsOfTheCommandLine) {
  const Options options =
      ParseOptions({"-H", "n[1-2]", "-U", "u", "--password-file", "f", "-C", "17", "-L", "user",
                    "-W", "no-checksum-check", "--attempts", "1", "--session-timeout", "2"});
  ASSERT_THAT(options.targets, testing::SizeIs(2));
  for (const Target& target : options.targets) {
    EXPECT_EQ(target.settings.userName, "u");
    EXPECT_EQ(target.settings.passwordFile, "f");
    EXPECT_EQ(target.settings.cipherSuite, 17);
    EXPECT_EQ(target.settings.privilegeLevel, 2);
    EXPECT_EQ(target.settings.workaroundFlags, 0x40);
    EXPECT_EQ(target.settings.attempts, 1);
    EXPECT_EQ(target.settings.sessionTimeoutMs, 2000);
  }
}

TEST(Options, HostsFileNamesTargetsAndItsLinesWin) {
  const TemporaryFile file("n1 user=ann cipher-suite=17\n[a]\nn2 port=6230\n");
  const std::string path = file.Path();
  const Options options =
      ParseOptions({"--hosts-file", path.c_str(), "-U", "bob", "-C", "3", "-p", "7"});
  EXPECT_THAT(PlacesOf(options), ElementsAre("n1:7", "n2:6230"));
  EXPECT_EQ(options.targets[0].settings.userName, "ann");
  EXPECT_EQ(options.targets[0].settings.cipherSuite, 17);
  EXPECT_EQ(options.targets[1].settings.userName, "bob");
  EXPECT_EQ(options.targets[1].settings.cipherSuite, 3);
  EXPECT_EQ(options.targets[1].group, "a");
  EXPECT_THAT(PlacesOf(ParseOptions({"--hosts-file", path.c_str(), "-U", "u", "-H", "@a"})),
              ElementsAre("n2:6230"));
}

TEST(Options, UserMayComeFromTheHostsFileAndHasToForEachTarget) {
  const TemporaryFile file("n1 user=ann\nn[2-3]\n");
  const std::string path = file.Path();
  EXPECT_EQ(ParseOptions({"--hosts-file", path.c_str(), "-H", "n1"}).targets[0].settings.userName,
            "ann");
  EXPECT_EQ(
      Refusal({"--hosts-file", path.c_str()}),
      "no user name given for n2:623; expected --user with an IPMI user name, or user= on its "
      "line of a hosts file");
}

TEST(Options, CommandHostsNeedsNoUser) {
  const Options options = ParseOptions({"-H", "n[1-2]", "hosts"});
  EXPECT_THAT(PlacesOf(options), ElementsAre("n1:623", "n2:623"));
  EXPECT_TRUE(options.task.command->AsksNobody());
}

TEST(Options, SelectPsuTakesExactlyOneHostAndNeitherRangeNorGroup) {
  const TemporaryFile file("[a]\nn1\nn2:[6230-6231]\n");
  const std::string path = file.Path();
  const std::vector<std::pair<Arguments, std::string>> table = {
      {{"-H", "n[1-2]"}, "n[1-2]"},
      {{"-H", "n[1]"}, "n[1]"},
      {{"-H", "a,b"}, "a,b"},
      {{"-H", "a,a"}, "a,a"},
      {{"-H", "@a"}, "@a"},
      {{"-H", "a", "-H", "a"}, "a,a"},
      {{"-H", "n1", "-H", "n2"}, "n1,n2"},
      {{"-H", "n2"}, "n2"},
  };
  for (const auto& [hosts, shown] : table) {
    Arguments arguments = {"-U", "u", "--hosts-file", path.c_str(), "select-psu", "1"};
    arguments.insert(arguments.end(), hosts.begin(), hosts.end());
    EXPECT_EQ(Refusal(arguments),
              "host is \"" + shown +
                  "\"; expected exactly one for a command that changes something, and neither a "
                  "range nor a group");
  }
  EXPECT_EQ(Refusal({"-U", "u", "--hosts-file", path.c_str(), "select-psu", "1"}),
            "no host is named with --host; expected exactly one for a command that changes "
            "something, and neither a range nor a group");
  EXPECT_THAT(PlacesOf(ParseOptions(
                  {"-H", "n1", "-U", "u", "--hosts-file", path.c_str(), "select-psu", "1"})),
              ElementsAre("n1:623"));
}

TEST(Options, StandardInputIsForOneOfHostsAndPassword) {
  EXPECT_EQ(
      Refusal({"--hosts-file", "-", "--password-file", "-", "-U", "u"}),
      "--hosts-file is \"-\" and --password-file is \"-\"; expected standard input for one of "
      "them");
}

TEST(Options, PortIsForHostsWithoutOne) {
  EXPECT_THAT(PlacesOf(ParseOptions({"-H", "a:1,b", "-p", "2", "-U", "u"})),
              ElementsAre("a:1", "b:2"));
}

TEST(Options, UserNameOfSixteenBytesIsTheLongest) {
  EXPECT_EQ(ParseOptions({"-H", "a", "-U", "0123456789abcdef"}).targets.front().settings.userName,
            "0123456789abcdef");
  EXPECT_EQ(Refusal({"-H", "a", "-U", "0123456789abcdefg"}),
            "user name is \"0123456789abcdefg\", 17 bytes long; expected at most 16 bytes");
}

struct BadLine {
  Arguments arguments;
  std::string part;
};

TEST(Options, WrongUseIsRefusedByName) {
  const std::vector<BadLine> table = {
      {{}, "no host given"},
      {{"-U", "u"}, "no host given"},
      {{"-H", "", "-U", "u"}, "no host given"},
      {{"-H", "a"}, "no user name given"},
      {{"-H", "a", "-U", ""}, "no user name given"},
      {{"-H", "a b", "-U", "u"}, "host is \"a b\""},
      {{"-H", "a", "-U", "u", "-p", "x"}, "port is \"x\""},
      {{"-H", "a", "-U", "u", "-C", "4"}, "cipher suite is \"4\""},
      {{"-H", "a", "-U", "u", "-L", "root"}, "privilege level is \"root\""},
      {{"-H", "a", "-U", "u", "-W", "all"}, "workaround is \"all\""},
      {{"-H", "a", "-U", "u", "--format", "JSON"}, "format is \"JSON\""},
      {{"-H", "a", "-U", "u", "--format", ""}, "format is \"\""},
      {{"-H", "a", "-U", "u", "--json", "--format", "csv"}, "--json is given"},
      {{"-H", "a", "-U", "u", "--format", "csv", "--format", "csv"}, "--format"},
      {{"-H", "a", "-U", "u", "--attempts", "0"}, "number of attempts is \"0\""},
      {{"-H", "a", "-U", "u", "--session-timeout", "0"}, "session time-out is \"0\""},
      {{"-H", "a", "-U", "u", "--fanout", "0"}, "fan-out is \"0\""},
      {{"-H", "a", "-U", "u", "--fanout", "1001"}, "fan-out is \"1001\""},
      {{"-H", "a", "-U", "u", "--fanout", "x"}, "fan-out is \"x\""},
      {{"-H", "a", "-U", "u", "--timeout", "0"}, "time-out is \"0\""},
      {{"-H", "a", "-U", "u", "--timeout", "86401"}, "time-out is \"86401\""},
      {{"-H", "a", "-U", "u", "--format", "csv", "health"}, "format is \"csv\" with the command"},
      {{"-H", "a", "-U", "u", "stray"}, "argument is \"stray\""},
      {{"-H", "a", "-U", "u", "-W", "no-checksum-check", "stray"}, "argument is \"stray\""},
      {{"-H", "a", "-U", "u", "--frob"}, "argument is \"--frob\""},
      {{"-H", "a", "-U", "u", "\x1b[2J"}, "argument is \"\\x1b[2J\""},
      {{"-H", "a", "-U", "u", "-7"}, "argument is \"-7\""},
      {{"-H", "a", "-U", "u", "Power"}, "argument is \"Power\""},
      {{"-H", "a", "-U", "u", "power", "caps"}, "argument is \"caps\""},
      {{"-H", "a", "-U", "u", "power", "1"}, "argument is \"1\""},
      {{"-H", "a", "-U", "u", "--frob", "power"}, "argument is \"--frob\""},
      {{"-H", "a", "-U", "u", "select-psu"}, "no PSU given"},
      {{"-H", "a", "-U", "u", "select-psu", "1", "2"}, "argument is \"2\""},
      {{"-H", "a", "-U"}, "--user"},
      {{"-H", "a", "-H", "", "-U", "u"}, "no host given"},
      {{"-H", "a", "-U", "u", "-U", "u"}, "--user"},
      {{"--hosts-file", "/nowhere", "-U", "u"}, "hosts file \"/nowhere\" cannot be read"},
      {{"--hosts-file", "", "-U", "u"}, "hosts file \"\" cannot be read"},
      {{"--hosts-file", "a", "--hosts-file", "b", "-U", "u"}, "--hosts-file"},
      {{"-H", "a,", "-U", "u"}, "host list is \"a,\""},
      {{"-H", "n[2-1]", "-U", "u"}, "host range is \"n[2-1]\", wrong at character 3"},
      {{"-H", "n[1-5000]", "-U", "u"}, "which names more than 4096 hosts"},
      {{"-H", "n", "--exclude", "n[1-", "-U", "u"}, "host range is \"n[1-\", wrong at"},
      {{"-H", "n", "--exclude", "", "-U", "u"}, "host list is \"\""},
      {{"-H", "n", "--exclude", "n", "-U", "u"}, "no host is left"},
      {{"-H", "@a", "-U", "u"}, "group is \"@a\""},
      {{"-H", "n[1-2]", "hosts", "1"}, "argument is \"1\""},
  };
  for (const BadLine& row : table) {
    SCOPED_TRACE(row.part);
    const std::string refusal = Refusal(row.arguments);
    EXPECT_THAT(refusal, HasSubstr(row.part));
    EXPECT_THAT(refusal, HasSubstr("; expected "));
  }
}

TEST(Options, PasswordOnTheCommandLineIsRefusedWithoutShowingIt) {
  const std::vector<Arguments> table = {
      {"-P"},
      {"-P", "sesame"},
      {"-Psesame"},
      {"-vPsesame"},
      {"--password", "sesame"},
      {"--password=sesame"},
      {"-H", "a", "-P", "open", "sesame"},
      {"-H", "a", "-p", "x", "-P", "sesame", "-P", "sesame", "--frob"},
  };
  for (const Arguments& arguments : table) {
    const std::string refusal = Refusal(arguments);
    EXPECT_THAT(refusal, HasSubstr("--password-file"));
    EXPECT_THAT(refusal, HasSubstr("IPMI_PASSWORD"));
    EXPECT_THAT(refusal, HasSubstr("prompt"));
    EXPECT_THAT(refusal, Not(HasSubstr("sesame")));
  }
}

TEST(Options, HelpShowsCommandsExamplesAndExitCodes) {
  const std::string help = std::get<Notice>(Parse({"--help"})).text;
  EXPECT_THAT(help, HasSubstr("Usage: smm-inventory [OPTIONS] [COMMAND]\n"));
  EXPECT_THAT(help, HasSubstr("\nCommands; "));
  EXPECT_THAT(help, HasSubstr("  select-psu N "));
  EXPECT_THAT(help, HasSubstr("Examples:"));
  EXPECT_THAT(help, HasSubstr("Exit codes:"));
  EXPECT_THAT(help, Not(HasSubstr("-P,")));
}

TEST(Options, HelpFitsATerminal) {
  std::istringstream lines(std::get<Notice>(Parse({"--help"})).text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
  }
}

TEST(Options, HelpAfterACommandIsAboutThatCommand) {
  EXPECT_EQ(std::get<Notice>(Parse({"power", "--help"})).text, CommandHelp(*FindCommand("power")));
  EXPECT_EQ(std::get<Notice>(Parse({"-H", "caps", "--help", "psus"})).text,
            CommandHelp(*FindCommand("psus")));
  EXPECT_EQ(std::get<Notice>(Parse({"select-psu", "-h"})).text,
            CommandHelp(*FindCommand("select-psu")));
  EXPECT_THAT(std::get<Notice>(Parse({"powr", "--help"})).text, HasSubstr("\nCommands; "));
}

TEST(Options, VersionIsOneLine) {
  EXPECT_THAT(std::get<Notice>(Parse({"--version"})).text,
              testing::MatchesRegex("smm-inventory [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
}  // namespace Tavrin
