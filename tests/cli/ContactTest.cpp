#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <thread>

#include "support/TemporaryFile.h"
#include "tests/cli/Tool.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"
#include "tests/support/UdpPort.h"

// How runs end that come to no query, or are refused on their way.

namespace Tavrin {
namespace {

using nlohmann::json;
using namespace nlohmann::literals;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;
using Texts = std::vector<std::string>;

constexpr const char* kNothingRead = "\n\nnothing read\n";

/// Another second is for a busy machine.
constexpr std::chrono::seconds kSoon{3};

int SentenceCount(const std::string& text) { return CountOf("smm-inventory: ", text); }

struct Timed {
  Finished finished;
  Clock::duration time{};
};

Timed RunTimed(const Texts& arguments, const Texts& environment, const std::string& password) {
  const Clock::time_point begin = Clock::now();
  Finished finished = RunTool(arguments, environment, password + "\n");
  return {finished, Clock::now() - begin};
}

struct Login {
  const char* name;
  std::string user;
  std::string password;
  Texts options;
  Texts environment;
  std::string reason;
};

void PrintTo(const Login& login, std::ostream* out) { *out << login.name; }

class RefusedLogin : public testing::TestWithParam<Login> {};

TEST_P(RefusedLogin, IsMadeOnceAndToldAtOnce) {
  const SimulatedSmm simulator({"--generation", "2"});
  const Relay relay(simulator.Port());
  const std::string address = "127.0.0.1:" + std::to_string(relay.Port());
  Texts arguments = CallArguments(address, GetParam().options);
  arguments.at(3) = GetParam().user;
  const Timed run = RunTimed(arguments, GetParam().environment, GetParam().password);
  EXPECT_EQ(run.finished.exitCode, 5);
  EXPECT_EQ(relay.SessionsAskedFor(), 1U);
  EXPECT_LT(run.time, kSoon);
  EXPECT_EQ(SentenceCount(run.finished.error), 1);
  EXPECT_THAT(run.finished.error, AllOf(HasSubstr("smm-inventory: nothing read from " + address +
                                                  ": no IPMI connection could be opened ("),
                                        HasSubstr(GetParam().reason), Not(HasSubstr("guess")),
                                        Not(HasSubstr("IPMI_"))));
  EXPECT_THAT(run.finished.output, Not(HasSubstr("guess")));
}

constexpr const char* kPasswordStep =
    "; next: check the password; if it is right, try -W open-session-privilege\n";
constexpr const char* kUserStep =
    "; next: check the user name, and that the SMM allows this user IPMI over LAN\n";

INSTANTIATE_TEST_SUITE_P(
    Logins, RefusedLogin,
    testing::Values(
        Login{"WrongPassword", "admin", "guess", {}, {}, kPasswordStep},
        Login{"WrongPasswordWithAGenerationSetByHand",
              "admin",
              "guess",
              {},
              {"SMM_TYPE=1"},
              kPasswordStep},
        Login{"WrongPasswordInADocument", "admin", "guess", {"--json"}, {}, kPasswordStep},
        Login{"UnknownUser", "nobody", "sesame", {}, {}, kUserStep},
        Login{"UnknownUserWithAGenerationSetByHand",
              "nobody",
              "sesame",
              {},
              {"SMM_TYPE=0"},
              kUserStep}),
    [](const testing::TestParamInfo<Login>& login) { return login.param.name; });

TEST(RefusedLogin, DocumentHoldsTheFailureAlone) {
  const SimulatedSmm simulator({"--generation", "1"});
  const Finished finished = RunTool(CallArguments(simulator.Address(), {"--json"}), {}, "guess\n");
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/address"_json_pointer), simulator.Address());
  EXPECT_EQ(document.at("/failure/statusName"_json_pointer), "NotConnected");
  EXPECT_THAT(document.at("/failure/reason"_json_pointer).get<std::string>(),
              StartsWith("no IPMI connection could be opened ("));
  EXPECT_EQ(document.at("/queries"_json_pointer), json::object());
}

TEST(RefusedLogin, InTheMiddleOfARunIsTheLast) {
  auto simulator = std::make_unique<SimulatedSmm>(Texts{"--generation", "2"});
  Relay relay(simulator->Port());
  Texts call = CallArguments("127.0.0.1:" + std::to_string(relay.Port()), {});
  call.insert(call.begin(), SMM_INVENTORY);
  Child tool(call, {}, "sesame\n");
  // The first session is the detection's, the second the construction's.
  while (relay.SessionsAskedFor() < 2) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  // Which is over long before the library's pause of three seconds is.
  std::this_thread::sleep_for(std::chrono::seconds(1));
  simulator.reset();
  const std::size_t before = relay.SessionsAskedFor();
  simulator =
      std::make_unique<SimulatedSmm>(Texts{"--generation", "2"}, R"({"overrides": []})", "changed");
  relay.Lead(simulator->Port());
  const Finished finished = tool.Wait();
  EXPECT_EQ(finished.exitCode, 5);
  EXPECT_EQ(relay.SessionsAskedFor(), before + 1);
  EXPECT_THAT(finished.output, HasSubstr("  generation   second\n"));
  EXPECT_THAT(
      finished.error,
      AllOf(
          HasSubstr("smm-inventory: platform id, PSU slots, nodes, machine type, serial number, "),
          HasSubstr(" not read: no IPMI connection could be opened ("), HasSubstr(kPasswordStep)));
  EXPECT_EQ(SentenceCount(finished.error), 1);
}

void ExpectNothingReadFrom(const std::string& address, const Finished& finished) {
  EXPECT_EQ(finished.exitCode, 4);
  EXPECT_THAT(finished.output, EndsWith("\n\n" + address + kNothingRead));
  EXPECT_EQ(SentenceCount(finished.error), 1);
  EXPECT_THAT(finished.error,
              AllOf(StartsWith("smm-inventory: nothing read from " + address +
                               ": no IPMI connection could be opened ("),
                    Not(HasSubstr("-L ")), Not(HasSubstr("-C ")), Not(HasSubstr("sesame"))));
}

TEST(DeadHost, WhereNobodyListensEndsTheRunAtOnce) {
  const Timed run = RunTimed(CallArguments(kDeadHost, {}), {}, "sesame");
  EXPECT_LT(run.time, kSoon);
  ExpectNothingReadFrom(kDeadHost, run.finished);
}

TEST(DeadHost, ThatIsSilentEndsTheRunAfterThreeSeconds) {
  const UdpPort silent;
  const std::string address = "127.0.0.1:" + silent.Text();
  const Timed run = RunTimed(CallArguments(address, {}), {}, "sesame");
  EXPECT_GT(run.time, std::chrono::seconds(3));
  EXPECT_LT(run.time, std::chrono::seconds(3) + kSoon);
  ExpectNothingReadFrom(address, run.finished);
}

TEST(DeadHost, EndsTheRunAfterOneRoundOfAttemptsWhereItsPresenceIsNotAsked) {
  const Timed run = RunTimed(CallArguments(kDeadHost, {"--no-ping"}), {}, "sesame");
  EXPECT_LT(run.time, std::chrono::seconds(16));
  ExpectNothingReadFrom(kDeadHost, run.finished);
}

TEST(DeadHost, OptionsBoundAttemptsAndTime) {
  for (const Texts& environment : {Texts{}, Texts{"SMM_TYPE=1"}}) {
    const Timed run = RunTimed(CallArguments(kDeadHost, {"--no-ping", "--attempts", "2",
                                                         "--session-timeout", "0.5", "-v"}),
                               environment, "sesame");
    EXPECT_EQ(run.finished.exitCode, 4);
    EXPECT_GT(run.time, std::chrono::milliseconds(700));
    EXPECT_LT(run.time, kSoon);
    const std::string line = "[warning] platform/standalone/ipmi_client/IpmiClient";
    const std::size_t first = run.finished.error.find(line);
    const std::size_t second = run.finished.error.find(line, first + 1);
    EXPECT_NE(second, std::string::npos) << run.finished.error;
    EXPECT_EQ(run.finished.error.find(line, second + 1), std::string::npos) << run.finished.error;
  }
}

TEST(DeadHost, SettingsOfTheHostsFileWinOverOptionsAndEnvironment) {
  const TemporaryFile password("sesame\n");
  const TemporaryFile hosts(std::string(kDeadHost) + " user=admin attempts=1 session-timeout=0.2 " +
                            "password-file=" + password.Path() + "\n");
  const Timed run = RunTimed({"--hosts-file", hosts.Path(), "--no-ping", "-v", "--attempts", "9",
                              "--session-timeout", "60", "--password-file", "/nowhere"},
                             {"IPMI_CONNECT_RETRY_TIMES=7", "IPMI_PRIVILEGE_LEVEL=2"}, "");
  EXPECT_EQ(run.finished.exitCode, 4);
  EXPECT_LT(run.time, kSoon);
  EXPECT_THAT(run.finished.error,
              AllOf(HasSubstr("IPMI_PRIVILEGE_LEVEL is 2, from the environment\n"),
                    Not(HasSubstr("IPMI_CONNECT_RETRY_TIMES is"))));
}

TEST(DeadHost, DocumentHoldsNothingThatWasNotRead) {
  const Finished finished =
      RunTool(CallArguments(kDeadHost, {"--json", "--attempts", "1", "--session-timeout", "0.2"}),
              {}, "sesame\n");
  EXPECT_EQ(finished.exitCode, 4);
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/failure/status"_json_pointer), 2);
  EXPECT_EQ(document.at("/queries"_json_pointer), json::object());
}

TEST(DeadHost, RowsHoldTheReasonAlone) {
  const Finished finished = RunTool(
      CallArguments(kDeadHost, {"--format=csv", "--attempts", "1", "--session-timeout", "0.2"}), {},
      "sesame\n");
  EXPECT_EQ(finished.exitCode, 4);
  EXPECT_THAT(finished.output, StartsWith("enclosure,query,number,field,value,text,reason\r\n"
                                          "127.0.0.1:9,,,,,,no IPMI connection could be opened ("));
}

TEST(DeadHost, ForbiddenAttemptIsNamedAsTheCause) {
  for (const Texts& environment :
       {Texts{"IPMI_CONNECT_RETRY_TIMES=0"}, Texts{"IPMI_CONNECT_RETRY_TIMES=0", "SMM_TYPE=0"}}) {
    const Timed run = RunTimed(CallArguments(kDeadHost, {"--no-ping"}), environment, "sesame");
    EXPECT_EQ(run.finished.exitCode, 1);
    EXPECT_LT(run.time, kSoon);
    EXPECT_THAT(
        run.finished.error,
        HasSubstr("no IPMI connection could be opened (IPMI_CONNECT_RETRY_TIMES is 0, which "
                  "allows no attempt); next: give --attempts 3, or set "
                  "IPMI_CONNECT_RETRY_TIMES to 1 or more\n"));
  }
}

TEST(UnknownGeneration, ReadsNothing) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "254"},
                               R"({"overrides": [{"command": "0xA8", "completionCode": "0xC0"}]})");
  const Timed run = RunTimed(CallArguments(simulator.Address(), {"power", "-vvv"}), {}, "sesame");
  EXPECT_EQ(run.finished.exitCode, 1);
  EXPECT_LT(run.time, kSoon + std::chrono::seconds(2));
  EXPECT_EQ(run.finished.output, simulator.Address() + kNothingRead);
  EXPECT_THAT(
      run.finished.error,
      AllOf(HasSubstr("smm-inventory: nothing read from " + simulator.Address() +
                      ": the SMM's generation is not known, since the SMM refused the "
                      "request (completion code 0xC0: busy); next: run again in a minute\n"),
            Not(HasSubstr("cmd=0x98"))));
}

TEST(UnknownGeneration, DocumentHoldsTheFailureAlone) {
  const SimulatedSmm simulator({"--generation", "2"},
                               R"({"overrides": [{"command": "0xA8", "completionCode": "0xD4"}]})");
  const Finished finished = RunTool(CallArguments(simulator.Address(), {"--json"}), {}, "sesame\n");
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/failure/statusName"_json_pointer), "NoUsableResult");
  EXPECT_THAT(document.at("/failure/reason"_json_pointer).get<std::string>(),
              HasSubstr("insufficient privilege"));
  EXPECT_THAT(finished.error, HasSubstr("; next: try a higher -L, "));
}

TEST(UnknownGeneration, OneSetByHandCountsAsKnown) {
  const SimulatedSmm simulator({"--generation", "1"},
                               R"({"overrides": [{"command": "0xA8", "completionCode": "0xC0"}]})");
  const Finished finished =
      RunTool(CallArguments(simulator.Address(), {"power"}), {"SMM_TYPE=0"}, "sesame\n");
  EXPECT_THAT(finished.output, HasSubstr("  average  1610\n"));
}

TEST(Environment, SettingThatReplacesADefaultIsShownByV) {
  const Texts environment = {"IPMI_PRIVILEGE_LEVEL=2",     "IPMI_SESSION_TIMEOUT_MS=150",
                             "IPMI_CIPHER_SUITE=x",        "SMM_TYPE=1",
                             "IPMI_CONNECT_RETRY_TIMES=7", "IPMI_RETRANSMISSION_TIMEOUT_MS=20"};
  const Finished finished =
      RunTool(CallArguments(kDeadHost, {"-v", "--attempts", "1"}), environment, "sesame\n");
  EXPECT_THAT(finished.error,
              AllOf(HasSubstr("IPMI_PRIVILEGE_LEVEL is 2, from the environment\n"),
                    HasSubstr("IPMI_SESSION_TIMEOUT_MS is 150, from the environment\n"),
                    HasSubstr("IPMI_RETRANSMISSION_TIMEOUT_MS is 20, from the environment\n"),
                    HasSubstr("SMM_TYPE is 1, from the environment\n"),
                    Not(HasSubstr("IPMI_CIPHER_SUITE is x, from")),
                    Not(HasSubstr("IPMI_CONNECT_RETRY_TIMES is"))));
}

TEST(Environment, MalformedSettingIsToldWithoutV) {
  const Finished finished =
      RunTool(CallArguments(kDeadHost, {"--no-ping", "--attempts", "1"}),
              {"IPMI_PRIVILEGE_LEVEL=abc", "IPMI_SESSION_TIMEOUT_MS=150"}, "sesame\n");
  EXPECT_THAT(
      finished.error,
      StartsWith("smm-inventory: IPMI_PRIVILEGE_LEVEL is \"abc\"; expected a whole number"));
}

TEST(Environment, SettingsAreNotShownWithoutV) {
  const Finished finished = RunTool(CallArguments(kDeadHost, {"--attempts", "1"}),
                                    {"IPMI_SESSION_TIMEOUT_MS=150"}, "sesame\n");
  EXPECT_THAT(finished.error, Not(HasSubstr("from the environment")));
}

TEST(Environment, SettingOutOfRangeIsNamedAsTheCause) {
  const Finished finished =
      RunTool(CallArguments(kDeadHost, {"--no-ping"}), {"IPMI_PRIVILEGE_LEVEL=7"}, "sesame\n");
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.error, HasSubstr("(IPMI_PRIVILEGE_LEVEL is \"7\"; expected a whole number "
                                        "from 2 to 4); next: correct that setting\n"));
}

}  // namespace
}  // namespace Tavrin
