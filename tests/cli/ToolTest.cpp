#include <gmock/gmock.h>
#include <sys/stat.h>

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
