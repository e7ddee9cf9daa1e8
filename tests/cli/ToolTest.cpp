#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/cli/Tool.h"
#include "tests/support/UnwritableOutput.h"

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
      {{"-H", "a", "-U", "u", "powers"}, {}, "", "argument is \"powers\""},
      {{"-H", "a", "-U", "u", "select-psu"}, {}, "", "no PSU given"},
      {{"-H", "a", "-U", "u", "select-psu", "1a"}, {}, "", "PSU is \"1a\""},
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
  for (const std::string option : {"--help", "--version"}) {
    const Finished finished = RunTool({option});
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

TEST(Tool, DeadHostIsToldAfterTheFirstAttemptAndInTheEnd) {
  // Port 9 is the discard service, which answers nothing where it runs at all.
  const Finished finished = RunTool(
      {"-H", "127.0.0.1:9", "-U", "u"},
      {"IPMI_PASSWORD=sesame", "IPMI_SESSION_TIMEOUT_MS=200", "IPMI_CONNECT_RETRY_TIMES=1"});
  EXPECT_EQ(finished.exitCode, 1);
  const std::size_t firstComplaint = finished.error.find("; still trying\n");
  ASSERT_NE(firstComplaint, std::string::npos);
  EXPECT_LT(firstComplaint, finished.error.find("attempt 2 of 6"));
  EXPECT_EQ(finished.error.find("; still trying\n", firstComplaint + 1), std::string::npos);
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: generation, platform id, PSU slots, nodes, machine type, "
                        "serial number, firmware version, name, chassis power, power caps, node "
                        "status (1, 2, 3, 4), node power (1, 2, 3, 4), PSU fans, PSU firmware, PSU "
                        "status not read: no IPMI connection could be opened (connect failed: host "
                        "127.0.0.1, port 9, user \"u\": "));
  EXPECT_THAT(finished.error, HasSubstr("; next: check host, port, user and password"));
  EXPECT_THAT(finished.error, Not(HasSubstr("sesame")));
}

}  // namespace
}  // namespace Tavrin
