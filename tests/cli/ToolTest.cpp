#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>

#include "support/TemporaryFile.h"
#include "tests/cli/Tool.h"

namespace Tavrin {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kWrongUsage = 2;

long LineCount(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

struct BadCall {
  std::vector<std::string> arguments;
  std::vector<std::string> environment;
  std::string input;
  std::string expected;
};

TEST(Tool, BadInputGetsOneSentenceAndCodeTwo) {
  const std::vector<BadCall> table = {
      {{}, {}, "", "no host given"},
      {{"-H", "a:b", "-U", "u"}, {}, "", "port is \"b\""},
      {{"-H", "a b", "-U", "u"}, {}, "", "host is \"a b\""},
      {{"-H", "[::1", "-U", "u"}, {}, "", "host is \"[::1\""},
      {{"-H", "n[9-5]", "-U", "u"}, {}, "", "host range is \"n[9-5]\", wrong at character 3"},
      {{"-H", "n[1-1000000000]", "-U", "u"}, {}, "", "names more than 4096 hosts"},
      {{"-H", "n[1-2]", "--exclude", "n[1-", "-U", "u"}, {}, "", "host range is \"n[1-\""},
      {{"-H", "@a", "-U", "u"}, {}, "", "group is \"@a\""},
      {{"-H", "n[1-2]", "-U", "u", "select-psu", "1"}, {}, "", "host is \"n[1-2]\""},
      {{"--hosts-file", "/nowhere", "-U", "u"}, {}, "", "hosts file \"/nowhere\""},
      {{"--hosts-file", "-", "-U", "u"},
       {},
       "n1\nn2 x=y\n",
       "standard input, line 2: key is \"x\""},
      {{"--hosts-file", "-"}, {}, "n1 password=sesame\n", "standard input, line 1: key is"},
      {{"--hosts-file", "-"},
       {},
       "n1 user=u password-file=/nowhere\n",
       "password file \"/nowhere\" cannot be opened"},
      {{"--hosts-file", "-"}, {}, "n1\n", "no user name given for n1:623"},
      {{"--hosts-file", "-", "--password-file", "-", "-U", "u"}, {}, "", "--hosts-file is \"-\""},
      {{"-H", "n[2-1]", "hosts"}, {}, "", "host range is \"n[2-1]\""},
      {{"-H", "a", "-p", "70000", "-U", "u"}, {}, "", "port is \"70000\""},
      {{"-H", "a", "-U", "u", "-C", "99"}, {}, "", "cipher suite is \"99\""},
      {{"-H", "a", "-U", "u", "-L", "king"}, {}, "", "privilege level is \"king\""},
      {{"-H", "a", "-U", "u", "-W", "magic"}, {}, "", "workaround is \"magic\""},
      {{"-H", "a", "-U", "u", "--nope"}, {}, "", "argument is \"--nope\""},
      {{"-H", "a", "-U", "u", "powr"}, {}, "", "argument is \"powr\""},
      {{"-H", "a", "-U", "u", "select-psu"}, {}, "", "no PSU given"},
      {{"-H", "a", "-U", "u", "select-psu", "10"}, {}, "", "PSU is \"10\""},
      {{"-H", "a", "-U", "u", "--attempts", "0"}, {}, "", "number of attempts is \"0\""},
      {{"-H", "a", "-U", "u", "--session-timeout", "601"}, {}, "", "session time-out is \"601\""},
      {{"-H", "a", "-U", "u", "--verbose=99999999999999999999"}, {}, "", "--verbose"},
      {{"-H", "fe80::1%\x1b[2J", "-U", "u"}, {}, "", "host is \"fe80::1%\\x1b[2J\""},
      {{"-H", "a", "-U", "u", "-P", "sesame"}, {}, "", "option -P"},
      {{"-H", "a", "-U", "u"}, {}, "", "no password given"},
      {{"-H", "a", "-U", "u"}, {"IPMI_PASSWORD="}, "", "IPMI_PASSWORD is empty"},
      {{"-H", "a", "-U", "u"}, {"IPMI_PASSWORD=sesame-sesame-sesame-"}, "", "longer than 20 bytes"},
      {{"-H", "a", "-U", "u", "--password-file", "-"}, {}, "\n", "standard input is empty"},
      {{"-H", "a", "-U", "u", "--password-file", "-"},
       {},
       "sesame-sesame-sesame-\n",
       "standard input is longer than 20 bytes"},
      {{"-H", "a", "-U", "u", "--password-file", "/nowhere"}, {}, "", "\"/nowhere\""},
  };
  for (const BadCall& call : table) {
    SCOPED_TRACE(call.expected);
    const Finished finished = RunTool(call.arguments, call.environment, call.input);
    EXPECT_EQ(finished.exitCode, kWrongUsage);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(LineCount(finished.error), 1);
    EXPECT_THAT(finished.error, StartsWith("smm-inventory: "));
    EXPECT_THAT(finished.error, HasSubstr(call.expected));
    EXPECT_THAT(finished.error, HasSubstr("; expected "));
    EXPECT_THAT(finished.error, Not(HasSubstr("sesame")));
  }
}

TEST(Tool, PasswordFileThatOthersCanReadIsRefused) {
  const TemporaryFile file("sesame\n");
  chmod(file.Path().c_str(), 0644);
  const Finished finished = RunTool({"-H", "a", "-U", "u", "--password-file", file.Path()});
  EXPECT_EQ(finished.exitCode, kWrongUsage);
  EXPECT_THAT(finished.error, HasSubstr("(mode 0644); expected a file that only its owner"));
}

TEST(Tool, PasswordFileWinsOverTheEnvironment) {
  const Finished finished =
      RunTool({"-H", "a", "-U", "u", "--password-file", "/nowhere"}, {"IPMI_PASSWORD=sesame"});
  EXPECT_EQ(finished.exitCode, kWrongUsage);
  EXPECT_THAT(finished.error, HasSubstr("\"/nowhere\" cannot be opened"));
}

TEST(Tool, CommandHostsPrintsTheExpansionAndAsksNobody) {
  const Finished finished = RunTool(
      {"-H", "rack[09-10],[2001:db8::1]", "-H", "n1:6230,rack09", "--exclude", "rack10", "hosts"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.output, "rack09:623\n[2001:db8::1]:623\nn1:6230\n");
  EXPECT_EQ(finished.error, "smm-inventory: named more than once and asked once: rack09:623\n");
}

TEST(Tool, CommandHostsReadsAHostsFileFromStandardInput) {
  const std::string text = "[a] # first\nn[1-2] user=u port=6230\n[b]\nn3\n";
  const Finished all = RunTool({"--hosts-file", "-", "hosts"}, {}, text);
  EXPECT_EQ(all.output, "n1:6230\nn2:6230\nn3:623\n");
  EXPECT_EQ(all.error, "");
  EXPECT_EQ(all.exitCode, 0);
  EXPECT_EQ(RunTool({"--hosts-file", "-", "-H", "@b,n2", "hosts"}, {}, text).output,
            "n3:623\nn2:6230\n");
}

TEST(Tool, CommandHostsThatCannotPrintFails) {
  EXPECT_THAT(ComplaintsAboutUnwritableOutput({SMM_INVENTORY, "-H", "a", "hosts"}),
              Each("smm-inventory: unexpected error: standard output cannot be written\ncode 3\n"));
}

TEST(Tool, HelpAndVersionGoToStandardOutput) {
  const std::vector<std::vector<std::string>> table = {
      {"--help"}, {"--version"}, {"power", "--help"}};
  for (const std::vector<std::string>& arguments : table) {
    const Finished finished = RunTool(arguments);
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_THAT(finished.output, HasSubstr("smm-inventory"));
    EXPECT_EQ(finished.error, "");
  }
}

TEST(Tool, HelpAndVersionThatCannotBeWrittenFail) {
  for (const std::string option : {"--help", "--version"}) {
    EXPECT_THAT(
        ComplaintsAboutUnwritableOutput({SMM_INVENTORY, option}),
        Each("smm-inventory: unexpected error: standard output cannot be written\ncode 3\n"));
  }
}

}  // namespace
}  // namespace Tavrin
