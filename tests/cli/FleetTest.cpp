#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <thread>

#include "support/TemporaryDirectory.h"
#include "support/TemporaryFile.h"
#include "tests/cli/Tool.h"
#include "tests/support/Content.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"
#include "tests/support/UdpPort.h"

namespace Tavrin {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;
using Texts = std::vector<std::string>;

std::string ReadScenario(const std::string& name) {
  return ContentOf(std::string(SMM_SCENARIOS) + "/" + name + ".json");
}

Texts LinesOf(const std::string& text) {
  Texts lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

Finished RunOn(const std::string& hosts, const Texts& options,
               const std::string& password = "sesame") {
  return RunTool(CallArguments(hosts, options), {}, password + '\n');
}

TEST(Fleet, HealthIsToldWorstFirstAndAFaultEndsWithSix) {
  const SimulatedSmm well({"--generation", "1"});
  const SimulatedSmm faulty({"--generation", "2"}, ReadScenario("node-fault"));
  const SimulatedSmm lacking({"--generation", "2"}, ReadScenario("psu-missing"));
  const std::string hosts =
      well.Address() + ',' + kDeadHost + ',' + lacking.Address() + ',' + faulty.Address();
  const Finished finished = RunOn(hosts, {"health"});
  EXPECT_EQ(finished.exitCode, 6);
  const Texts lines = LinesOf(finished.output);
  ASSERT_EQ(lines.size(), 4U) << finished.output;
  EXPECT_THAT(lines[0], StartsWith(faulty.Address() + "  CRITICAL  node 2 power fault"));
  EXPECT_THAT(lines[1], MatchesRegex(lacking.Address() + "  WARNING   PSU 2 missing"));
  EXPECT_THAT(lines[2], MatchesRegex(std::string(kDeadHost) + " +UNKNOWN   not read: .*"));
  EXPECT_THAT(lines[3], MatchesRegex(well.Address() + "  OK"));
  EXPECT_THAT(finished.error, EndsWith("\nfailed 1 of 4: 127.0.0.1:9 (not reached 1)\n"));
}

TEST(Fleet, IgnoredFaultIsWellAndEndsWithZero) {
  const SimulatedSmm lacking({"--generation", "2"}, ReadScenario("psu-missing"));
  const Finished finished = RunOn(lacking.Address(), {"--ignore", "psu:2:presence", "health"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_EQ(finished.output, lacking.Address() + "  OK\n");
}

TEST(Fleet, JsonIsALineForEachWithItsPlace) {
  const SimulatedSmm first({"--generation", "1"});
  const SimulatedSmm second({"--generation", "2"});
  const Finished finished =
      RunOn(first.Address() + ',' + kDeadHost + ',' + second.Address(), {"--json", "identity"});
  EXPECT_EQ(finished.exitCode, 1);
  const Texts lines = LinesOf(finished.output);
  ASSERT_EQ(lines.size(), 3U) << finished.output;
  for (const std::string& line : lines) {
    EXPECT_EQ(SchemaErrors({line}).front(), "");
    const json document = json::parse(line);
    const Texts hosts = {first.Address(), kDeadHost, second.Address()};
    EXPECT_EQ(document.at("host"), hosts.at(document.at("index")));
  }
  EXPECT_EQ(json::parse(lines.front()).at("host"), kDeadHost) << "the dead one ends first";
}

TEST(Fleet, TablesStandInTheOrderAskedBehindTheHealthOfAll) {
  const SimulatedSmm first({"--generation", "1"});
  const SimulatedSmm second({"--generation", "2"});
  const Finished finished = RunOn(second.Address() + ',' + first.Address(), {});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_THAT(finished.output,
              StartsWith(second.Address() + "  OK\n" + first.Address() + "  OK\n\n" +
                         second.Address() + "\n\nenclosure\n  generation   second\n"));
  EXPECT_THAT(finished.output,
              HasSubstr("\n\n" + first.Address() + "\n\nenclosure\n  generation   first\n"));
}

TEST(Fleet, LikeValuesAreFolded) {
  const SimulatedSmm first({"--generation", "1"});
  const SimulatedSmm second({"--generation", "1"});
  const Finished finished = RunOn(first.Address() + ',' + kDeadHost + ',' + second.Address(),
                                  {"--group-by", "firmwareVersion"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.output,
              MatchesRegex("FGEN7-1.05     2: 127.0.0.1:\\[[0-9,-]+\\]\nnot read       1: "
                           "127.0.0.1:9\n"));
}

TEST(Fleet, EachThatRefusesThePasswordEndsWithFiveAndIsAHostsFile) {
  const SimulatedSmm smm({"--generation", "1"});
  const TemporaryFile failed("");
  const Finished finished =
      RunOn(smm.Address(), {"--failed-to", failed.Path(), "identity"}, "wrong");
  EXPECT_EQ(finished.exitCode, 5);
  EXPECT_THAT(finished.error, StartsWith("smm-inventory: nothing read from " + smm.Address()));
  EXPECT_EQ(ContentOf(failed.Path()), smm.Address() + '\n');
}

TEST(Fleet, TimeOutEndsOneEnclosureAndTellsIt) {
  const SimulatedSmm smm({"--generation", "1"});
  const auto begin = std::chrono::steady_clock::now();
  const Finished finished = RunOn(smm.Address(), {"--timeout", "2", "identity"});
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.error, "smm-inventory: nothing read from " + smm.Address() +
                                ": the time given for this enclosure is over; next: allow more "
                                "time, such as --timeout 300\n");
}

struct EndingSignal {
  const char* name;
  int number;
};

void PrintTo(const EndingSignal& signal, std::ostream* out) { *out << signal.name; }

class FleetInterruption : public testing::TestWithParam<EndingSignal> {};

TEST_P(FleetInterruption, PrintsWhatIsReadAndEndsSoon) {
  const SimulatedSmm first({"--generation", "1"});
  const SimulatedSmm second({"--generation", "2"});
  Child tool(Joined({SMM_INVENTORY},
                    CallArguments(first.Address() + ',' + kDeadHost + ',' + second.Address(),
                                  {"--json", "identity"})),
             {}, "sesame\n");
  EXPECT_THAT(tool.ReadLine(), HasSubstr(kDeadHost));
  tool.Signal(GetParam().number);
  tool.Signal(GetParam().number);  // As whoever signals a process and then its group.
  const auto begin = std::chrono::steady_clock::now();
  const Finished finished = tool.Wait();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  EXPECT_EQ(finished.exitCode, 130);
  EXPECT_EQ(LinesOf(finished.output).size(), 2U) << finished.output;
  EXPECT_THAT(finished.error, HasSubstr("stopped 2"));
}

INSTANTIATE_TEST_SUITE_P(Signals, FleetInterruption,
                         testing::Values(EndingSignal{"Interrupt", SIGINT},
                                         EndingSignal{"Termination", SIGTERM},
                                         EndingSignal{"Hangup", SIGHUP}),
                         [](const testing::TestParamInfo<EndingSignal>& row) {
                           return std::string(row.param.name);
                         });

/// Runs on a simulated SMM whose answers within a session are lost once the first one has begun, so
/// that the session waits for a third of a second to be closed; returns what it printed and how
/// long it went on behind the first of the signals.
std::pair<Finished, std::chrono::steady_clock::duration> Interrupted(
    const std::vector<std::chrono::milliseconds>& pauses) {
  const SimulatedSmm smm({"--generation", "1"});
  Relay relay(smm.Port());
  Child tool(Joined({SMM_INVENTORY},
                    CallArguments("127.0.0.1:" + std::to_string(relay.Port()), {"identity"})),
             {}, "sesame\n");
  while (relay.SessionsAskedFor() == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  relay.Break(At(Answer::WithinSession, Silence()));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const auto begin = std::chrono::steady_clock::now();
  for (const std::chrono::milliseconds pause : pauses) {
    tool.Signal(SIGINT);
    std::this_thread::sleep_for(pause);
  }
  Finished finished = tool.Wait();
  return {finished, std::chrono::steady_clock::now() - begin};
}

TEST(Interrupt, OfOneHostPrintsWhatIsReadWithinTwoSeconds) {
  const auto [finished, time] = Interrupted({std::chrono::milliseconds(0)});
  EXPECT_EQ(finished.exitCode, 130);
  EXPECT_THAT(finished.output, EndsWith("\n\nnothing read\n"));
  EXPECT_THAT(finished.error, EndsWith(": stopped; next: run again\n"));
  EXPECT_LT(time, std::chrono::milliseconds(2500));
}

TEST(Interrupt, SecondEndsTheRunAtOnce) {
  const auto [finished, time] =
      Interrupted({std::chrono::milliseconds(210), std::chrono::milliseconds(0)});
  EXPECT_EQ(finished.exitCode, 130);
  EXPECT_EQ(finished.output, "");
  EXPECT_LT(time, std::chrono::milliseconds(1000));
}

TEST(Fleet, HealthOfNobodyReachedIsUnknownAndEndsWithFour) {
  const Finished finished = RunOn(kDeadHost, {"health"});
  EXPECT_EQ(finished.exitCode, 4);
  EXPECT_THAT(finished.output, StartsWith(std::string(kDeadHost) + "  UNKNOWN  not read: "));
}

TEST(Fleet, TooFewOpenFilesAreRefusedBeforeAnythingIsSent) {
  const Finished finished = Child(AsScript(R"(ulimit -n 8; exec "$0" "$@")",
                                           Joined({SMM_INVENTORY}, CallArguments("a,b", {}))),
                                  {}, "sesame\n")
                                .Wait();
  EXPECT_EQ(finished.exitCode, 2);
  EXPECT_THAT(finished.error,
              StartsWith("smm-inventory: the limit of open files is \"8\"; expected at least "));
}

TEST(Fleet, RefusedUseLeavesTheFileOfFailuresAsItIs) {
  const TemporaryFile failed("rack01\n");
  for (const Texts& options :
       {Texts{"--failed-to", failed.Path(), "select-psu", "1"},
        Texts{"--failed-to", failed.Path(), "--exclude", kDeadHost, "identity"},
        Texts{"--failed-to", failed.Path(), "hosts"}}) {
    EXPECT_EQ(RunOn(kDeadHost, options).exitCode, 2);
    EXPECT_EQ(ContentOf(failed.Path()), "rack01\n");
  }
}

TEST(Fleet, OptionsThatWouldChangeNothingAreRefused) {
  for (const Texts& options :
       {Texts{"--timeout", "40", "select-psu", "1"}, Texts{"--group-by", "name", "select-psu", "1"},
        Texts{"--group-by", "name", "fans"}, Texts{"--group-by", "name", "--json"}}) {
    const Finished finished = RunOn(kDeadHost, options);
    EXPECT_EQ(finished.exitCode, 2);
    EXPECT_EQ(finished.output, "");
    EXPECT_THAT(finished.error,
                AllOf(StartsWith("smm-inventory: " + options.front() + " is given with "),
                      HasSubstr("; expected it ")));
  }
}

/// A hosts file and a password file that are in use, each by its own path and by another one.
class FailedHostsFileInUse : public testing::Test {
 protected:
  FailedHostsFileInUse() { std::filesystem::create_symlink(hosts_.Path(), LinkToHosts()); }

  std::string LinkToHosts() const { return folder_.Path() + "/link"; }
  /// A run whose failures are to go there.
  Finished RunInto(const std::string& path) const {
    return RunTool({"--hosts-file", hosts_.Path(), "-U", "admin", "--failed-to", path, "identity"});
  }
  void ExpectRefusal(const std::string& path, const std::string& why) const {
    const Finished finished = RunInto(path);
    EXPECT_EQ(finished.exitCode, 2);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.error, "smm-inventory: --failed-to is \"" + path + "\", which " + why +
                                  "; expected a file of its own that can be written\n");
    EXPECT_EQ(ContentOf(hosts_.Path()), content_);
    EXPECT_EQ(ContentOf(password_.Path()), "sesame\n");
  }

  const TemporaryFile password_{"sesame\n"};
  const std::string content_ = std::string(kDeadHost) + " password-file=" + password_.Path() + '\n';
  const TemporaryFile hosts_{content_};
  const TemporaryDirectory folder_{"poveixme-"};
};

TEST_F(FailedHostsFileInUse, AsHostsFileIsRefused) {
  ExpectRefusal(hosts_.Path(), "is the hosts file that is read");
  ExpectRefusal(LinkToHosts(), "is the hosts file that is read");
}

TEST_F(FailedHostsFileInUse, AsPasswordFileIsRefused) {
  ExpectRefusal(password_.Path(), "is a password file");
}

TEST_F(FailedHostsFileInUse, AsStandardOutputIsRefused) { ExpectRefusal("-", "is no file"); }

TEST_F(FailedHostsFileInUse, InAFolderThatIsNotThereIsRefused) {
  ExpectRefusal(folder_.Path() + "/none/failed", "cannot be written");
}

TEST(Fleet, FileOfFailuresThatTakesNothingIsToldAndLeavesTheExitCode) {
  const Finished finished = RunOn(kDeadHost, {"--failed-to", "/dev/full", "identity"});
  EXPECT_EQ(finished.exitCode, 4);
  EXPECT_THAT(finished.error,
              EndsWith("\nsmm-inventory: --failed-to is \"/dev/full\", which cannot be written; "
                       "expected a file of its own that can be written\n"));
}

TEST(Fleet, HealthAsJsonOfEachIsPrintedAsItEnds) {
  const UdpPort silent;
  const std::string silentHost = "127.0.0.1:" + silent.Text();
  const Finished finished = RunOn(silentHost + ',' + kDeadHost, {"--json", "health"});
  EXPECT_EQ(finished.exitCode, 4);
  const Texts lines = LinesOf(finished.output);
  ASSERT_EQ(lines.size(), 2U) << finished.output;
  EXPECT_EQ(json::parse(lines[0]).at("host"), kDeadHost);
  EXPECT_EQ(json::parse(lines[1]).at("host"), silentHost);
  for (const std::string& line : lines) {
    EXPECT_EQ(SchemaErrors({line}).front(), "");
    const json health = json::parse(line).at("health");
    EXPECT_EQ(health.at("severity"), "UNKNOWN");
    EXPECT_THAT(health.at("text").get<std::string>(), StartsWith("not read: "));
    EXPECT_EQ(health.at("findings").size(), 1U);
  }
}

TEST(Fleet, OnePasswordFromAPipeServesEveryUser) {
  UdpPort dead;
  dead.Refuse();
  const TemporaryFile hosts(std::string(kDeadHost) + " user=ann\n127.0.0.1:" + dead.Text() +
                            " user=bob\n");
  const Finished finished =
      RunTool({"--hosts-file", hosts.Path(), "--password-file", "-", "identity"}, {}, "sesame\n");
  EXPECT_EQ(finished.exitCode, 4) << finished.error;
}

TEST(Nagios, OneLineTellsHealthWithNumbersAndItsOwnExitCodes) {
  const SimulatedSmm faulty({"--generation", "2"}, ReadScenario("node-fault"));
  const Finished finished = RunOn(faulty.Address(), {"--nagios"});
  EXPECT_EQ(finished.exitCode, 2);
  EXPECT_THAT(finished.output,
              MatchesRegex("SMM CRITICAL - node 2 power fault \\| 'chassis_power'=.*\n"));
  EXPECT_EQ(finished.error, "");
}

TEST(Nagios, MissingPsuIsAWarning) {
  const SimulatedSmm lacking({"--generation", "2"}, ReadScenario("psu-missing"));
  const Finished finished = RunOn(lacking.Address(), {"--nagios"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.output, StartsWith("SMM WARNING - PSU 2 missing | "));
}

TEST(Nagios, DeadHostIsUnknown) {
  const Finished finished = RunOn(kDeadHost, {"--nagios"});
  EXPECT_EQ(finished.exitCode, 3);
  EXPECT_THAT(finished.output, AllOf(StartsWith("SMM UNKNOWN - not read: "), Not(HasSubstr("|"))));
}

TEST(Nagios, WrongUsageIsUnknownOnStandardOutput) {
  const std::vector<std::pair<Texts, std::string>> table = {
      {{"--nagios", "-C", "99"}, "cipher suite is \"99\"; expected "},
      {{"--nagios", "-H", "b"}, "2 hosts are named; expected "},
      {{"--nagios", "select-psu", "1"}, "--nagios is given with the command select-psu; expected "},
      {{"--nagios", "--json"}, "--nagios is given with a format; expected "}};
  for (const auto& [options, refusal] : table) {
    const Finished finished = RunOn("a", options);
    EXPECT_EQ(finished.exitCode, 3);
    EXPECT_THAT(finished.output, StartsWith("SMM UNKNOWN - " + refusal));
    EXPECT_EQ(finished.error, "");
  }
}

}  // namespace
}  // namespace Tavrin
