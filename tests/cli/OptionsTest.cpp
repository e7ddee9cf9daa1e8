#include "tools/smm-inventory/Options.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <vector>

#include "report/Format.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;
using Arguments = std::vector<const char*>;

std::variant<Options, Notice> Parse(Arguments arguments) {
  arguments.insert(arguments.begin(), "smm-inventory");
  return ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

std::string ContentOf(const char* path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

Options ParseOptions(const Arguments& arguments) { return std::get<Options>(Parse(arguments)); }

std::string Refusal(const Arguments& arguments) {
  try {
    Parse(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return {};
}

TEST(Options, HostAndUserAloneLeaveTheDefaults) {
  const Options options = ParseOptions({"-H", "smm1", "-U", "admin"});
  EXPECT_EQ(options.host, "smm1");
  EXPECT_EQ(options.port, 623);
  EXPECT_EQ(options.userName, "admin");
  EXPECT_EQ(options.passwordFile, std::nullopt);
  EXPECT_EQ(options.cipherSuite, std::nullopt);
  EXPECT_EQ(options.privilegeLevel, std::nullopt);
  EXPECT_EQ(options.workaroundFlags, std::nullopt);
  EXPECT_EQ(options.attempts, std::nullopt);
  EXPECT_EQ(options.sessionTimeoutMs, std::nullopt);
  EXPECT_EQ(options.verbosity, 0U);
  EXPECT_EQ(options.task.command, FindCommand("all"));
  EXPECT_EQ(options.format, &Formats().front());
}

TEST(Options, LongFormsAreTaken) {
  const Options options =
      ParseOptions({"--host=smm1", "--port", "6230", "--user", "admin", "--password-file", "-",
                    "--cipher-suite", "17", "--privilege", "operator", "--workaround",
                    "open-session-privilege", "--workaround", "no-checksum-check", "--verbose"});
  EXPECT_EQ(options.port, 6230);
  EXPECT_EQ(options.passwordFile, "-");
  EXPECT_EQ(options.cipherSuite, 17);
  EXPECT_EQ(options.privilegeLevel, 3);
  EXPECT_EQ(options.workaroundFlags, 0x50);
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
      EXPECT_EQ(options.workaroundFlags, 0x40);
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
  EXPECT_EQ(options.attempts, 1);
  EXPECT_EQ(options.sessionTimeoutMs, 2500);
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
                           "--verbose=99999999999999999999"};
  for (const char* argument : table) {
    SCOPED_TRACE(argument);
    EXPECT_EQ(Refusal({"-H", "a", "-U", "u", argument}),
              "argument is \"" + std::string(argument) + "\"; expected the option without a value");
  }
}

TEST(Options, PortIsTakenFromEitherPlace) {
  EXPECT_EQ(ParseOptions({"-H", "a:6230", "-U", "u"}).port, 6230);
  EXPECT_EQ(ParseOptions({"-H", "a", "-p", "6230", "-U", "u"}).port, 6230);
  EXPECT_EQ(ParseOptions({"-H", "a:6230", "-p", "6230", "-U", "u"}).port, 6230);
  EXPECT_EQ(ParseOptions({"-H", "[::1]:6230", "-U", "u"}).port, 6230);
}

TEST(Options, ContradictingPortsAreRefused) {
  EXPECT_EQ(Refusal({"-H", "a:1", "-p", "2", "-U", "u"}),
            "port is \"2\" and host is \"a:1\"; expected the port in one place");
}

TEST(Options, UserNameOfSixteenBytesIsTheLongest) {
  EXPECT_EQ(ParseOptions({"-H", "a", "-U", "0123456789abcdef"}).userName, "0123456789abcdef");
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
      {{"-H", "a", "-H", "b", "-U", "u"}, "--host"},
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
