#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "simulator/LoopbackPort.h"
#include "support/TemporaryDirectory.h"
#include "support/TemporaryFile.h"
#include "tests/support/Child.h"
#include "tests/support/Ipv6Test.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

/// A launcher with a temporary directory of its own, so that what it leaves there shows. The
/// directory is a base, too, because it has to be there before the process is.
class LauncherProcess : private TemporaryDirectory, public Child {
 public:
  explicit LauncherProcess(const std::vector<std::string>& arguments,
                           const std::string& path = "/usr/bin:/bin")
      : TemporaryDirectory("launcher-test-"),
        Child(Joined({SMM_SIMULATOR}, arguments), {"PATH=" + path, "TMPDIR=" + Directory()}) {}

  const std::string& Directory() const { return Path(); }

  std::ptrdiff_t FilesLeft() const {
    return std::distance(fs::directory_iterator(Directory()), fs::directory_iterator());
  }
};

TEST(Launcher, PrintsItsAddressInOneLineWhenReady) {
  const LauncherProcess launcher({"--generation", "1"});
  EXPECT_THAT(launcher.ReadLine(),
              testing::MatchesRegex(R"(smm-simulator ready at 127\.0\.0\.1:[0-9]+)"));
  launcher.Signal(SIGTERM);
  EXPECT_EQ(launcher.ReadLine(), "");
}

using LauncherOnIpv6 = Ipv6Test<>;

TEST_F(LauncherOnIpv6, AddressStandsInBrackets) {
  const LauncherProcess launcher({"--generation", "1", "--address", "::1"});
  EXPECT_THAT(launcher.ReadLine(),
              testing::MatchesRegex(R"(smm-simulator ready at \[::1\]:[0-9]+)"));
}

TEST(Launcher, KeepsItsFilesToItsUser) {
  const LauncherProcess launcher({"--generation", "1"});
  launcher.ReadLine();
  ASSERT_EQ(launcher.FilesLeft(), 1);
  const fs::directory_entry directory = *fs::directory_iterator(launcher.Directory());
  EXPECT_THAT(directory.path().filename(), testing::StartsWith("smm-simulator-"));
  EXPECT_EQ(directory.status().permissions(), fs::perms::owner_all);
  const fs::perms onlyOwner = fs::perms::owner_read | fs::perms::owner_write;
  EXPECT_EQ(fs::status(directory.path() / "lan.conf").permissions(), onlyOwner);
  EXPECT_EQ(fs::status(directory.path() / "settings").permissions(), onlyOwner);
  EXPECT_EQ(fs::status(directory.path() / "ipmi_sim.log").permissions(), onlyOwner);
}

TEST(Launcher, TellsIpmiSimWhoMayLogInWhere) {
  LauncherProcess launcher({"--generation", "1"});
  const std::string address = ReadReadyAddress(launcher);
  const fs::path files = fs::directory_iterator(launcher.Directory())->path();
  std::ostringstream configuration;
  configuration << std::ifstream(files / "lan.conf").rdbuf();
  EXPECT_EQ(configuration.str(),
            "name \"enclosure\"\n"
            "set_working_mc 0x20\n"
            "loadlib \"./smm_simulator_module.so\" \"settings\"\n"
            "startlan 1\n"
            "addr 127.0.0.1 " +
                address.substr(address.find(':') + 1) +
                "\n"
                "priv_limit admin\n"
                "allowed_auths_callback md5\n"
                "allowed_auths_user md5\n"
                "allowed_auths_operator md5\n"
                "allowed_auths_admin md5\n"
                "guid 51a0e1c05e000000000000000000f00d\n"
                "endlan\n"
                "user 2 true \"unset\" \"unset\" admin 63\n");
}

TEST(Launcher, IpmiSimKeepsItsStateAmongTheLaunchersFiles) {
  const LauncherProcess launcher({"--generation", "1"});
  launcher.ReadLine();
  ASSERT_EQ(ChildrenOf(launcher.Process()).size(), 1U);
  std::string call = ReadProcessFile(ChildrenOf(launcher.Process()).front(), "cmdline");
  std::replace(call.begin(), call.end(), '\0', ' ');
  EXPECT_EQ(call, "/usr/bin/ipmi_sim -c lan.conf -f commands -s state -n ");
  EXPECT_TRUE(fs::is_directory(fs::directory_iterator(launcher.Directory())->path() / "state"));
}

class EndingSignal : public testing::TestWithParam<int> {};

TEST_P(EndingSignal, LeavesNoProcessAndNoFile) {
  LauncherProcess launcher({"--generation", "2"});
  launcher.ReadLine();
  const std::vector<pid_t> children = ChildrenOf(launcher.Process());
  ASSERT_EQ(children.size(), 1U);
  launcher.Signal(GetParam());
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.error, "");
  EXPECT_EQ(launcher.FilesLeft(), 0);
  EXPECT_TRUE(EndsSoon(children[0]));
}

INSTANTIATE_TEST_SUITE_P(All, EndingSignal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT),
                         [](const auto& instance) {
                           return "Signal" + std::to_string(instance.param);
                         });

TEST(Launcher, SignalDuringTheStartEndsItCleanly) {
  LauncherProcess launcher({"--generation", "2"});
  while (launcher.FilesLeft() == 0) {
    std::this_thread::yield();
  }
  launcher.Signal(SIGTERM);
  EXPECT_EQ(launcher.Wait().exitCode, 0);
  EXPECT_EQ(launcher.FilesLeft(), 0);
}

TEST(Launcher, KilledHardTakesItsChildWithIt) {
  LauncherProcess launcher({"--generation", "1"});
  launcher.ReadLine();
  const std::vector<pid_t> children = ChildrenOf(launcher.Process());
  ASSERT_EQ(children.size(), 1U);
  launcher.Signal(SIGKILL);
  EXPECT_EQ(launcher.Wait().exitCode, -1);
  EXPECT_TRUE(EndsSoon(children[0]));
}

TEST(Launcher, DeathOfTheChildIsToldAndFails) {
  LauncherProcess launcher({"--generation", "1"});
  launcher.ReadLine();
  const std::vector<pid_t> children = ChildrenOf(launcher.Process());
  ASSERT_EQ(children.size(), 1U);
  kill(children[0], SIGKILL);
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.error, "smm-simulator: ipmi_sim ended by signal 9\n");
  EXPECT_EQ(launcher.FilesLeft(), 0);
}

TEST(Launcher, PortOfAnotherSimulatorIsRefused) {
  LauncherProcess first({"--generation", "1"});
  const std::string address = ReadReadyAddress(first);
  const std::string port = address.substr(address.find(':') + 1);
  LauncherProcess second({"--generation", "1", "--port", port});
  const Finished finished = second.Wait();
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.error, "smm-simulator: port " + port +
                                " of 127.0.0.1 is taken; expected a free port, or 0 for any free "
                                "one\n");
  EXPECT_EQ(second.FilesLeft(), 0);
}

TEST(Launcher, GivenFreePortIsUsed) {
  const std::uint16_t port = PortReservation::Take("127.0.0.1", 0).value().Port();
  const LauncherProcess launcher({"--generation", "1", "--port", std::to_string(port)});
  EXPECT_EQ(launcher.ReadLine(), "smm-simulator ready at 127.0.0.1:" + std::to_string(port));
}

TEST(Launcher, MissingIpmiSimIsNamedWithItsPackage) {
  LauncherProcess launcher({"--generation", "1"}, "/none");
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.error,
            "smm-simulator: the program ipmi_sim is in no directory of PATH; install the Debian "
            "package openipmi\n");
  EXPECT_EQ(launcher.FilesLeft(), 0);
}

TEST(Launcher, MissingPathLeadsToNoIpmiSim) {
  EXPECT_EQ(Child({SMM_SIMULATOR, "--generation", "1"}, {}).Wait().error,
            "smm-simulator: the program ipmi_sim is in no directory of PATH; install the Debian "
            "package openipmi\n");
}

/// A script that stands for ipmi_sim.
class Script {
 public:
  explicit Script(const std::string& commands) {
    directory_.Write("ipmi_sim", "#!/bin/sh\necho >>" + Starts() + "\n" + commands);
    fs::permissions(directory_.Path() + "/ipmi_sim", fs::perms::owner_all);
  }

  /// The value of PATH with which a launcher finds it.
  std::string SearchPath() const { return directory_.Path() + ":/usr/bin:/bin"; }

  /// How often it was started.
  std::ptrdiff_t Count() const {
    std::ifstream starts(Starts());
    return std::count(std::istreambuf_iterator<char>(starts), {}, '\n');
  }

 private:
  std::string Starts() const { return directory_.Path() + "/starts"; }

  TemporaryDirectory directory_{"launcher-test-"};
};

TEST(Launcher, IpmiSimThatEndsIsToldWithItsLastWords) {
  const Script script("echo first; echo 'last words' >&2; exit 3");
  LauncherProcess launcher({"--generation", "1"}, script.SearchPath());
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.error,
            "smm-simulator: ipmi_sim ended with exit status 3; its last line was \"last words\"\n");
  EXPECT_EQ(script.Count(), 1);
  EXPECT_EQ(launcher.FilesLeft(), 0);
}

const std::string kTaken = "echo 'Unable to bind to LAN port: Address already in use'; exit 1";

TEST(Launcher, PortThatIpmiSimFindsTakenIsExchangedFor20TimesUnlessItWasGiven) {
  const Script script(kTaken);
  LauncherProcess launcher({"--generation", "1"}, script.SearchPath());
  EXPECT_EQ(launcher.Wait().error, "smm-simulator: no free port of 127.0.0.1 was found\n");
  EXPECT_EQ(script.Count(), 20);
  const std::string port = std::to_string(PortReservation::Take("127.0.0.1", 0).value().Port());
  LauncherProcess givenOne({"--generation", "1", "--port", port}, script.SearchPath());
  EXPECT_EQ(givenOne.Wait().error, "smm-simulator: port " + port +
                                       " of 127.0.0.1 is taken; expected a free port, or 0 for "
                                       "any free one\n");
  EXPECT_EQ(script.Count(), 21);
}

TEST(Launcher, IpmiSimThatStaysSilentIsGivenUpAfter10SecondsAndEndedSoon) {
  const Script script("trap '' TERM; while :; do sleep 1; done");
  LauncherProcess launcher({"--generation", "1"}, script.SearchPath());
  const auto start = std::chrono::steady_clock::now();
  const Finished finished = launcher.Wait();
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_THAT(finished.error,
              testing::MatchesRegex("smm-simulator: ipmi_sim did not answer at 127\\.0\\.0\\.1:"
                                    "[0-9]+ within 10 seconds\n"));
  EXPECT_GE(took, std::chrono::seconds(10));
  EXPECT_LT(took, std::chrono::seconds(18));
  EXPECT_LT(finished.processorSeconds, 3);
}

TEST(Launcher, ModuleIsLookedForBesideItAndAmongTheLibraries) {
  const TemporaryDirectory directory("launcher-test-");
  const fs::path here = directory.Path() + "/usr/local/bin";
  fs::create_directories(here);
  fs::copy_file(SMM_SIMULATOR, here / "smm-simulator");
  const std::vector<std::string> call = {here / "smm-simulator", "--generation", "1"};
  const std::vector<std::string> environment = {"PATH=/usr/bin:/bin", "TMPDIR=" + directory.Path()};
  const std::string error = Child(call, environment).Wait().error;
  const std::string before =
      "smm-simulator: smm_simulator_module.so is neither in " + here.string() + " nor in ";
  ASSERT_THAT(error, testing::StartsWith(before + directory.Path() + "/"));
  const fs::path libraries = error.substr(before.size(), error.size() - before.size() - 1);
  EXPECT_EQ(libraries, libraries.lexically_normal());
  fs::create_directories(libraries);
  fs::copy(fs::path(SMM_SIMULATOR).parent_path() / "smm_simulator_module.so", libraries);
  EXPECT_THAT(Child(call, environment).ReadLine(), testing::StartsWith("smm-simulator ready at "));
}

TEST(Launcher, IpmiSimIsNoFileThatCannotBeExecuted) {
  const TemporaryDirectory directory("launcher-test-");
  std::ofstream(directory.Path() + "/ipmi_sim") << "no program";
  const LauncherProcess launcher({"--generation", "1"}, directory.Path() + ":/usr/bin");
  EXPECT_THAT(launcher.ReadLine(), testing::StartsWith("smm-simulator ready at "));
}

TEST(Launcher, IpmiSimIsFoundFromWhereTheLauncherWasStarted) {
  const Child launcher(
      AsScript(R"(cd /usr && exec "$0" "$@")", {SMM_SIMULATOR, "--generation", "1"}),
      {"PATH=/none::bin"});
  EXPECT_THAT(launcher.ReadLine(), testing::StartsWith("smm-simulator ready at "));
}

TEST(Launcher, IpmiSimReadsNothingAndPrintsIntoAFile) {
  const LauncherProcess launcher({"--generation", "1"});
  launcher.ReadLine();
  ASSERT_EQ(ChildrenOf(launcher.Process()).size(), 1U);
  const fs::path open = "/proc/" + std::to_string(ChildrenOf(launcher.Process()).front()) + "/fd";
  EXPECT_EQ(fs::read_symlink(open / "0"), "/dev/null");
  EXPECT_EQ(fs::read_symlink(open / "1").filename(), "ipmi_sim.log");
  EXPECT_EQ(fs::read_symlink(open / "2").filename(), "ipmi_sim.log");
}

/// The name under which the system shows the socket that holds the simulator's port.
std::string LockOf(const std::string& address) {
  std::ifstream sockets("/proc/self/net/unix");
  for (std::string line; std::getline(sockets, line);) {
    std::istringstream stream(line);
    const std::vector<std::string> columns{std::istream_iterator<std::string>(stream), {}};
    if (columns.back() == address && columns.size() > 6) {
      return "socket:[" + columns.at(6) + "]";
    }
  }
  return {};
}

TEST(Launcher, IpmiSimDoesNotInheritWhatHoldsThePort) {
  LauncherProcess launcher({"--generation", "1"});
  const std::string lock = LockOf(ReadReadyAddress(launcher));
  EXPECT_NE(lock, "");
  ASSERT_EQ(ChildrenOf(launcher.Process()).size(), 1U);
  const fs::path open = "/proc/" + std::to_string(ChildrenOf(launcher.Process()).front()) + "/fd";
  for (const fs::directory_entry& descriptor : fs::directory_iterator(open)) {
    EXPECT_NE(fs::read_symlink(descriptor), lock);
  }
}

TEST(Launcher, BadOptionGivesOneLineAndExitCode2) {
  LauncherProcess launcher({"--generation", "3"});
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 2);
  EXPECT_EQ(finished.error, "smm-simulator: --generation is \"3\"; expected 1 or 2\n");
  EXPECT_EQ(launcher.FilesLeft(), 0);
}

TEST(Launcher, ComplaintCannotDriveTheTerminal) {
  LauncherProcess launcher({"--generation", "\x1b[2J\n\x7f\xc2\x9b\\"});
  EXPECT_EQ(launcher.Wait().error,
            "smm-simulator: --generation is \"\\x1b[2J\\n\\x7f\\xc2\\x9b\\\\\"; expected 1 or 2\n");
}

TEST(Launcher, UnreadableScenarioGivesOneLineAndExitCode2) {
  LauncherProcess launcher({"--generation", "1", "--scenario", "/proc/self/mem"});
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 2);
  EXPECT_EQ(finished.error,
            "smm-simulator: --scenario is \"/proc/self/mem\"; expected a readable file "
            "(Input/output error)\n");
}

TEST(Launcher, BadScenarioGivesOneLineAndExitCode2BeforeAnythingStarts) {
  const TemporaryFile scenario(R"({"overrides": [{"command": "A8", "silent": true}]})");
  LauncherProcess launcher({"--generation", "1", "--scenario", scenario.Path()}, "/none");
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 2);
  EXPECT_EQ(finished.error, "smm-simulator: " + scenario.Path() +
                                ": overrides[0].command is \"A8\"; expected a byte as text, "
                                "\"0x00\" to \"0xFF\"\n");
}

TEST(Launcher, HelpGoesToStandardOutput) {
  LauncherProcess launcher({"--help"});
  EXPECT_EQ(launcher.ReadLine(), "Simulates the SMM of an enclosure over IPMI 2.0 on loopback.");
  const Finished finished = launcher.Wait();
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.error, "");
}

TEST(Launcher, HelpThatCannotBeWrittenFails) {
  EXPECT_THAT(ComplaintsAboutUnwritableOutput({SMM_SIMULATOR, "--help"}),
              testing::Each("smm-simulator: the help text cannot be written; expected an open "
                            "standard output\ncode 1\n"));
}

TEST(Launcher, AddressThatNobodyTakesFails) {
  const TemporaryDirectory directory("launcher-test-");
  EXPECT_THAT(ComplaintsAboutUnwritableOutput({SMM_SIMULATOR, "--generation", "1"},
                                              {"PATH=/usr/bin:/bin", "TMPDIR=" + directory.Path()}),
              testing::Each("smm-simulator: nobody takes the line with the address; expected an "
                            "open standard output\ncode 1\n"));
  EXPECT_TRUE(fs::is_empty(directory.Path()));
}

}  // namespace
}  // namespace Tavrin::Simulator
