#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/TemporaryFile.h"
#include "tests/cli/Terminal.h"
#include "tests/secrets/ProcessWatch.h"
#include "tests/secrets/Traces.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

const std::string kPasswordVariable = "IPMI_PASSWORD=";
constexpr const char* kOneAttempt = "IPMI_CONNECT_RETRY_TIMES=1";

/// Everything that others can learn of a run of the tool.
struct Learned : Watched {
  Finished finished;
};

/// Runs the tool at the highest log level; standard input holds `input`.
Learned WatchTool(const Texts& arguments, Texts environment = {}, const std::string& input = {}) {
  const Texts call = Joined({SMM_INVENTORY, "-vvv", "-W", "open-session-privilege"}, arguments);
  environment.insert(environment.end(), {"TAVRIN_LOG_LEVEL=4", "IPMI_SESSION_TIMEOUT_MS=1000"});
  Child tool(call, environment, input);
  std::future<Watched> watch = Watch(tool.Process());
  const Finished finished = tool.Wait();
  return {watch.get(), finished};
}

void ExpectNoPasswordIn(const Learned& learned) {
  EXPECT_THAT(learned.finished.output, TellsNoPassword());
  EXPECT_THAT(learned.finished.error, TellsNoPassword());
  EXPECT_THAT(learned.commandLines, TellsNoPassword());
}

/// A run that reads its password from standard input, and waits while it reads.
struct CircumstanceOfTool {
  const char* name;
  std::string host;  ///< Empty for the simulated enclosure.
  std::string user;
  std::string password;
  Texts options;
  Texts environment;
  int exitCode;
  std::string words;  ///< What standard error says of the circumstance.
};

void PrintTo(const CircumstanceOfTool& circumstance, std::ostream* out) {
  *out << circumstance.name;
}

class ToolSecrets : public testing::TestWithParam<CircumstanceOfTool> {};

TEST_P(ToolSecrets, PasswordIsToldNowhere) {
  const CircumstanceOfTool& given = GetParam();
  const SimulatedSmm simulator({"--generation", "2", "--platform", "254"}, R"({"overrides": [
    {"command": "0xB0", "data": "05 0B", "response": "00"}
  ]})",
                               kPassword);
  Texts arguments = {"-H",
                     given.host.empty() ? simulator.Address() : given.host,
                     "-U",
                     given.user,
                     "--password-file",
                     "-"};
  arguments.insert(arguments.end(), given.options.begin(), given.options.end());
  const Learned learned = WatchTool(arguments, given.environment, given.password + "\n");
  EXPECT_EQ(learned.finished.exitCode, given.exitCode) << learned.finished.error;
  EXPECT_THAT(learned.finished.error, HasSubstr(given.words));
  // What is searched is there.
  EXPECT_THAT(learned.commandLines, HasSubstr("--password-file"));
  EXPECT_THAT(learned.finished.error, AnyOf(HasSubstr("[info] "), HasSubstr("[warning] ")));
  ExpectNoPasswordIn(learned);
  EXPECT_THAT(learned.environments, TellsNoPassword());
}

INSTANTIATE_TEST_SUITE_P(
    Circumstances, ToolSecrets,
    testing::Values(
        CircumstanceOfTool{"Success", "", "admin", kPassword, {"power"}, {}, 0, "cmd=0x98"},
        CircumstanceOfTool{
            "Document", "", "admin", kPassword, {"--json", "psus"}, {}, 0, "cmd=0x92"},
        CircumstanceOfTool{
            "Exception", "", "admin", kPassword, {}, {}, 1, "gave up with an exception"},
        CircumstanceOfTool{"WrongUser", "", "nobody", kPassword, {}, {}, 5, "user \"nobody\": "},
        CircumstanceOfTool{"WrongPassword", "", "admin", kWrongPassword, {}, {}, 5, "password"},
        CircumstanceOfTool{
            "DeadHost", "127.0.0.1:9", "admin", kPassword, {}, {kOneAttempt}, 4, "port 9"},
        CircumstanceOfTool{
            "RefusedSuite", "", "admin", kPassword, {"-C", "17"}, {}, 1, "cipher suite"}),
    [](const testing::TestParamInfo<CircumstanceOfTool>& circumstance) {
      return circumstance.param.name;
    });

TEST(ToolSecrets, PasswordOfTheEnvironmentStaysThereOnly) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": []})", kPassword);
  const Learned learned = WatchTool({"-H", simulator.Address(), "-U", "admin", "identity"},
                                    {kPasswordVariable + kPassword});
  EXPECT_EQ(learned.finished.exitCode, 0) << learned.finished.error;
  ExpectNoPasswordIn(learned);
}

TEST(ToolSecrets, PasswordOfAFileIsToldNowhere) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": []})", kPassword);
  const TemporaryFile file(std::string(kPassword) + "\n");
  const Learned learned = WatchTool(
      {"-H", simulator.Address(), "-U", "admin", "--password-file", file.Path(), "identity"});
  EXPECT_EQ(learned.finished.exitCode, 0) << learned.finished.error;
  ExpectNoPasswordIn(learned);
  EXPECT_THAT(learned.environments, TellsNoPassword());
}

struct BadFile {
  std::string content;
  mode_t mode;
  std::string words;
};

TEST(ToolSecrets, RefusedFileIsNotQuoted) {
  const std::string password = kPassword;
  const std::vector<BadFile> table = {
      {password + "\n", 0640, "can be read by its group or by others"},
      {password + "\n", 0604, "can be read by its group or by others"},
      {password + "\n" + kWrongPassword + "\n", 0600, "more than one line"},
      {std::string(kOverlongPassword) + "\n", 0600, "longer than 20 bytes"},
      {password.substr(0, 10) + '\0' + password.substr(11) + "\n", 0600, "NUL byte"},
  };
  for (const BadFile& row : table) {
    const TemporaryFile file(row.content);
    chmod(file.Path().c_str(), row.mode);
    const Learned learned = WatchTool({"-H", "a", "-U", "u", "--password-file", file.Path()});
    EXPECT_EQ(learned.finished.exitCode, 2);
    EXPECT_THAT(learned.finished.error, HasSubstr(row.words));
    ExpectNoPasswordIn(learned);
  }
}

TEST(ToolSecrets, OverlongPasswordIsNotQuotedWhereverItIsFrom) {
  const std::vector<Learned> runs = {
      WatchTool({"-H", "a", "-U", "u", "--password-file", "-"}, {},
                std::string(kOverlongPassword) + "\n"),
      WatchTool({"-H", "a", "-U", "u"}, {kPasswordVariable + kOverlongPassword}),
  };
  for (const Learned& learned : runs) {
    EXPECT_EQ(learned.finished.exitCode, 2);
    EXPECT_THAT(learned.finished.error, HasSubstr("longer than 20 bytes"));
    ExpectNoPasswordIn(learned);
  }
}

TEST(ToolSecrets, PasswordOnTheCommandLineIsNotQuoted) {
  const std::vector<Texts> table = {
      {"-P", kPassword}, {std::string("-P") + kPassword}, {std::string("--password=") + kPassword}};
  for (const Texts& arguments : table) {
    const Finished finished = WatchTool(arguments).finished;
    EXPECT_EQ(finished.exitCode, 2);
    EXPECT_THAT(finished.error, AllOf(HasSubstr("option -P"), TellsNoPassword()));
  }
}

struct Typing {
  const char* name;
  Texts options;
  std::string password;
  int exitCode;
  std::string words;
};

void PrintTo(const Typing& typing, std::ostream* out) { *out << typing.name; }

class ToolPromptSecrets : public testing::TestWithParam<Typing> {};

TEST_P(ToolPromptSecrets, TypedPasswordIsToldNowhere) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": []})", kPassword);
  Terminal terminal;
  Texts call = {SMM_INVENTORY, "-vvv",  "-H", simulator.Address(),
                "-U",          "admin", "-W", "open-session-privilege",
                "identity"};
  call.insert(call.end(), GetParam().options.begin(), GetParam().options.end());
  Child tool(call, {"TAVRIN_LOG_LEVEL=4", "TERM=vt100"}, {}, terminal.Name());
  std::future<Watched> watch = Watch(tool.Process());
  terminal.ReadUntil("Password of admin");
  terminal.Type(GetParam().password + "\n");
  terminal.ReadToEnd();
  const Finished finished = tool.Wait();
  const Watched watched = watch.get();
  EXPECT_EQ(finished.exitCode, GetParam().exitCode) << terminal.Seen();
  EXPECT_THAT(terminal.Seen(), AllOf(HasSubstr(GetParam().words), TellsNoPassword()));
  EXPECT_THAT(finished.output, TellsNoPassword());
  EXPECT_THAT(watched.commandLines, AllOf(HasSubstr("identity"), TellsNoPassword()));
  EXPECT_THAT(watched.environments, TellsNoPassword());
}

INSTANTIATE_TEST_SUITE_P(
    Typings, ToolPromptSecrets,
    testing::Values(Typing{"Right", {}, kPassword, 0, "cmd=0xb0"},
                    Typing{"WrongAsStandardInput",
                           {"--password-file", "-"},
                           kWrongPassword,
                           5,
                           "no IPMI connection could be opened"},
                    Typing{"Overlong", {}, kOverlongPassword, 2, "longer than 20 bytes"}),
    [](const testing::TestParamInfo<Typing>& typing) { return typing.param.name; });

TEST(ToolSecrets, ToolHasNoRoomForACoreFile) {
  Terminal terminal;
  Child tool({SMM_INVENTORY, "-H", "a", "-U", "u"}, {}, {}, terminal.Name());
  terminal.ReadUntil("Password of u");
  std::ifstream file("/proc/" + std::to_string(tool.Process()) + "/limits");
  const std::string limits(std::istreambuf_iterator<char>(file), {});
  EXPECT_THAT(limits, testing::ContainsRegex("Max core file size +0 +0 "));
}

}  // namespace
}  // namespace Tavrin
