#include <gmock/gmock.h>
#include <poll.h>
#include <termios.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "support/TemporaryFile.h"
#include "tests/cli/Terminal.h"
#include "tests/cli/Tool.h"
#include "tests/support/SimulatedSmm.h"
#include "tests/support/UdpPort.h"

namespace Tavrin {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::string>;

class TerminalTest : public testing::Test {
 protected:
  /// The call with what hangups do changed by the option of env.
  Texts WithHangups(const std::string& option) const {
    Texts call = {"/usr/bin/env", option};
    call.insert(call.end(), call_.begin(), call_.end());
    return call;
  }

  /// The call as a job of an interactive shell, which says "at the shell" while it has the terminal
  /// and takes the job back to the foreground at Enter.
  Texts AsJob() const {
    return AsScript(R"("$0" "$@"; echo at the shell >&2; read line; fg)", call_, "-mc");
  }

  /// Types a password that is refused without anything being sent.
  void TypeUnfitPassword() const { terminal_.Type("sesame-sesame-sesame-\n"); }

  /// What the program left, which ends now or not at all.
  static Finished EndOf(Child& program) {
    if (!EndsSoon(program.Process())) {
      ADD_FAILURE() << "the program hangs";
      program.Signal(SIGKILL);
    }
    return program.Wait();
  }

  void ExpectRefusalOfTheTypedPassword(Child& program) {
    EXPECT_EQ(EndOf(program).exitCode, 2);
    terminal_.ReadUntil(
        "\r\nsmm-inventory: the password from the terminal is longer than 20 bytes");
    EXPECT_THAT(terminal_.Seen(), Not(HasSubstr("sesame")));
    EXPECT_TRUE(Echoes());
  }

  /// The call was stopped at the prompt; it is continued, and asks again.
  void ExpectTheTerminalBackUntilItContinues(Child& shell) {
    terminal_.ReadUntil("at the shell");
    EXPECT_TRUE(Echoes());
    terminal_.Type("\n");
    terminal_.ReadUntil("Password");
    EXPECT_FALSE(Echoes());
    TypeUnfitPassword();
    ExpectRefusalOfTheTypedPassword(shell);
  }

  termios Settings() const {
    termios settings{};
    EXPECT_EQ(tcgetattr(terminal_.Descriptor(), &settings), 0);
    return settings;
  }
  bool Echoes() const { return (Settings().c_lflag & ECHO) != 0; }
  void SwitchEchoOn() const {
    termios settings = Settings();
    settings.c_lflag |= ECHO;
    EXPECT_EQ(tcsetattr(terminal_.Descriptor(), TCSANOW, &settings), 0);
  }
  bool HasInput() const {
    pollfd source{terminal_.Descriptor(), POLLIN, 0};
    return poll(&source, 1, 0) == 1;
  }

  Terminal terminal_;
  Texts call_ = {SMM_INVENTORY, "-H", "a", "-U", "admin"};
};

/// Leaves a program the time to take what was typed, of which nothing shows.
void LetItBeTaken() { std::this_thread::sleep_for(std::chrono::milliseconds(300)); }

bool StopsSoon(pid_t process) {
  const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (ReadProcessFile(process, "stat").find(") T ") == std::string::npos &&
         std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return std::chrono::steady_clock::now() < giveUp;
}

TEST_F(TerminalTest, TypedPasswordIsNotShown) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password of admin at a:623: ");
  EXPECT_FALSE(Echoes());
  TypeUnfitPassword();
  ExpectRefusalOfTheTypedPassword(tool);
}

TEST_F(TerminalTest, QuestionNamesUserAndPortThatTheHostsFileSays) {
  const TemporaryFile file("[a]\nn1 user=ann port=6230\n");
  Child tool({SMM_INVENTORY, "--hosts-file", file.Path()}, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password of ann at n1:6230: ");
  TypeUnfitPassword();
  ExpectRefusalOfTheTypedPassword(tool);
}

TEST_F(TerminalTest, PasswordTypedAsStandardInputIsNotShown) {
  call_.insert(call_.end(), {"--password-file", "-"});
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password of admin at a:623: ");
  EXPECT_FALSE(Echoes());
  TypeUnfitPassword();
  ExpectRefusalOfTheTypedPassword(tool);
}

TEST_F(TerminalTest, WhatIsTypedBeforeTheQuestionIsNotTakenForThePassword) {
  terminal_.Type("early\n");
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  TypeUnfitPassword();
  ExpectRefusalOfTheTypedPassword(tool);
}

TEST_F(TerminalTest, WhatIsTypedBeyondThePasswordIsDropped) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("sesame-sesame-sesame-and much more\nrm -r precious\n");
  EndOf(tool);
  // Nothing is left for whoever reads the terminal next.
  EXPECT_FALSE(HasInput());
}

TEST_F(TerminalTest, EndOfInputAtThePromptIsAnEmptyPassword) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("\x04");
  EXPECT_EQ(EndOf(tool).exitCode, 2);
  terminal_.ReadUntil("the password from the terminal is empty");
  EXPECT_TRUE(Echoes());
}

TEST_F(TerminalTest, EndOfInputWithinAPasswordDoesNotEndIt) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("sesame-sesame\x04");
  LetItBeTaken();
  terminal_.Type("-sesame-\n");
  ExpectRefusalOfTheTypedPassword(tool);
}

struct Interruption {
  const char* name;
  int signal;
  const char* typed;
};

void PrintTo(const Interruption& interruption, std::ostream* out) { *out << interruption.name; }

class PromptInterruption : public TerminalTest, public testing::WithParamInterface<Interruption> {};

TEST_P(PromptInterruption, RestoresTheTerminalAndEndsByTheSignal) {
  const termios before = Settings();
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type(GetParam().typed);
  LetItBeTaken();
  tool.Signal(GetParam().signal);
  EXPECT_EQ(EndOf(tool).signal, GetParam().signal);
  EXPECT_EQ(Settings().c_lflag, before.c_lflag);
  EXPECT_FALSE(HasInput());
}

INSTANTIATE_TEST_SUITE_P(
    Signals, PromptInterruption,
    testing::Values(Interruption{"Interrupt", SIGINT, ""}, Interruption{"Termination", SIGTERM, ""},
                    Interruption{"Hangup", SIGHUP, ""}, Interruption{"Quit", SIGQUIT, ""},
                    Interruption{"InterruptWithinALine", SIGINT, "abc"},
                    Interruption{"InterruptAfterEndOfInputWithinALine", SIGINT, "abc\x04"},
                    Interruption{"TerminationAfterEndOfInputWithinALine", SIGTERM, "abc\x04"}),
    [](const testing::TestParamInfo<Interruption>& row) { return row.param.name; });

struct Key {
  const char* name;
  const char* typed;
  int signal;
};

void PrintTo(const Key& key, std::ostream* out) { *out << key.name; }

class PromptKey : public TerminalTest, public testing::WithParamInterface<Key> {};

TEST_P(PromptKey, EndsTheProgramAlsoAfterEndOfInputWithinALine) {
  const termios before = Settings();
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("abc\x04");
  LetItBeTaken();
  terminal_.Type(GetParam().typed);
  EXPECT_EQ(EndOf(tool).signal, GetParam().signal);
  EXPECT_EQ(Settings().c_lflag, before.c_lflag);
}

INSTANTIATE_TEST_SUITE_P(Keys, PromptKey,
                         testing::Values(Key{"CtrlC", "\x03", SIGINT},
                                         Key{"CtrlBackslash", "\x1c", SIGQUIT}),
                         [](const testing::TestParamInfo<Key>& row) { return row.param.name; });

class PromptWithoutHangups : public TerminalTest,
                             public testing::WithParamInterface<const char*> {};

TEST_P(PromptWithoutHangups, IsNotInterruptedByOne) {
  Child tool(WithHangups(GetParam()), {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  tool.Signal(SIGHUP);
  LetItBeTaken();
  TypeUnfitPassword();
  ExpectRefusalOfTheTypedPassword(tool);
  EXPECT_EQ(terminal_.Seen().find("Password"), terminal_.Seen().rfind("Password"));
}

TEST_P(PromptWithoutHangups, EndsWithTheTerminal) {
  Child tool(WithHangups(GetParam()), {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.HangUp();
  EXPECT_EQ(EndOf(tool).exitCode, 2);
}

INSTANTIATE_TEST_SUITE_P(Options, PromptWithoutHangups,
                         testing::Values("--ignore-signal=HUP", "--block-signal=HUP"),
                         [](const testing::TestParamInfo<const char*>& option) {
                           return option.index == 0 ? "Ignored" : "Blocked";
                         });

TEST_F(TerminalTest, StopKeyGivesTheTerminalBackUntilTheProgramContinues) {
  Child shell(AsJob(), {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("abc\x04");
  LetItBeTaken();
  terminal_.Type("\x1a");
  ExpectTheTerminalBackUntilItContinues(shell);
}

TEST_F(TerminalTest, StopSignalGivesTheTerminalBackUntilTheProgramContinues) {
  Child shell(AsJob(), {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  ASSERT_EQ(ChildrenOf(shell.Process()).size(), 1U);
  kill(ChildrenOf(shell.Process()).front(), SIGTSTP);
  ExpectTheTerminalBackUntilItContinues(shell);
}

TEST_F(TerminalTest, ProgramThatWasStoppedUnawaresAsksAgainWithoutEcho) {
  Child shell(AsJob(), {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  ASSERT_EQ(ChildrenOf(shell.Process()).size(), 1U);
  kill(ChildrenOf(shell.Process()).front(), SIGSTOP);
  terminal_.ReadUntil("at the shell");
  SwitchEchoOn();  // As shells with line editing do.
  terminal_.Type("\n");
  terminal_.ReadUntil("Password");
  EXPECT_FALSE(Echoes());
  TypeUnfitPassword();
  ExpectRefusalOfTheTypedPassword(shell);
}

TEST_F(TerminalTest, ProgramInTheBackgroundLeavesTheTerminalAloneAndCanBeEnded) {
  Child shell(AsScript(R"("$0" "$@" & echo at the shell >&2; read line)", call_, "-mc"), {}, {},
              terminal_.Name());
  terminal_.ReadUntil("at the shell");
  ASSERT_EQ(ChildrenOf(shell.Process()).size(), 1U);
  const pid_t tool = ChildrenOf(shell.Process()).front();
  EXPECT_TRUE(StopsSoon(tool));
  EXPECT_TRUE(Echoes());
  EXPECT_THAT(terminal_.Seen(), Not(HasSubstr("Password")));
  kill(tool, SIGTERM);
  kill(tool, SIGCONT);
  EXPECT_TRUE(EndsSoon(tool));
}

/// A run that has its password and waits for an enclosure.
class WaitOnTerminal : public TerminalTest {
 protected:
  Child Start(const std::string& terminalKind) const {
    return {{SMM_INVENTORY, "-H", simulator_.Address(), "-U", "admin", "-W",
             "open-session-privilege", "identity"},
            {"IPMI_PASSWORD=sesame", "TERM=" + terminalKind},
            {},
            terminal_.Name()};
  }

 private:
  SimulatedSmm simulator_{{"--generation", "1"}};
};

TEST_F(WaitOnTerminal, InterruptLeavesTheTerminalAsItWas) {
  const termios before = Settings();
  Child tool = Start("vt100");
  terminal_.ReadUntil("attempt 1 of 6");
  terminal_.Type("\x03");
  EXPECT_EQ(EndOf(tool).exitCode, 130);
  EXPECT_EQ(Settings().c_lflag, before.c_lflag);
}

TEST_F(TerminalTest, InterruptEndsTheWaitForADeadHostAtOnce) {
  const UdpPort silent;
  call_[2] = "127.0.0.1:" + silent.Text();
  Child tool(call_, {"IPMI_PASSWORD=sesame", "TERM=vt100"}, {}, terminal_.Name());
  terminal_.ReadUntil("connecting to");
  LetItBeTaken();
  const auto typed = std::chrono::steady_clock::now();
  terminal_.Type("\x03");
  EXPECT_EQ(EndOf(tool).exitCode, 130);
  // A tenth of a second, and what a busy machine may add. To find nobody there takes 3 seconds.
  EXPECT_LT(std::chrono::steady_clock::now() - typed, std::chrono::milliseconds(1100));
}

TEST_F(TerminalTest, ProgressOfSeveralIsGoneWhereTheyArePrintedOnTheSameTerminal) {
  const UdpPort silent;
  call_[2] = "127.0.0.1:9,127.0.0.1:" + silent.Text();
  Child shell(AsScript(R"("$0" "$@" >&2)", call_), {"IPMI_PASSWORD=sesame", "TERM=vt100"}, {},
              terminal_.Name());
  terminal_.ReadUntil("0 of 2 done, 0 failed, 0 s; longest: 127.0.0.1:9");
  terminal_.ReadUntil("1 of 2 done, 1 failed, 1 s; longest: 127.0.0.1:" + silent.Text());
  terminal_.ReadUntil("\r\x1b[K");
  terminal_.ReadUntil("\r\x1b[K127.0.0.1:9");
  terminal_.ReadUntil("failed 2 of 2: 127.0.0.1:[9," + silent.Text() + "] (not reached 2)\r\n");
  EXPECT_EQ(shell.Wait().exitCode, 4);
  EXPECT_THAT(terminal_.Seen(), Not(ContainsRegex("longest: [^\r]*\r\n")));
}

/// A run on dead hosts that ends at once; what it prints can be sent to the terminal, too.
class DeadHostsOnTerminal : public TerminalTest {
 protected:
  /// All that the terminal shows.
  std::string SeenOf(const Texts& call, const Texts& environment) {
    Child tool(call, Joined({"IPMI_PASSWORD=sesame"}, environment), {}, terminal_.Name());
    terminal_.ReadToEnd();
    EXPECT_EQ(tool.Wait().exitCode, 4);
    return terminal_.Seen();
  }
  static Texts CallOf(const std::string& hosts, const Texts& options) {
    return Joined({SMM_INVENTORY, "-H", hosts, "-U", "admin"}, options);
  }
};

struct ColourCase {
  const char* name;
  Texts environment;
  const char* word;
};

void PrintTo(const ColourCase& row, std::ostream* out) { *out << row.name; }

class HealthOnATerminal : public DeadHostsOnTerminal,
                          public testing::WithParamInterface<ColourCase> {};

TEST_P(HealthOnATerminal, HasColoursWhereTheyAreWanted) {
  EXPECT_THAT(
      SeenOf(AsScript(R"("$0" "$@" >&2)", CallOf(kDeadHost, {"health"})), GetParam().environment),
      HasSubstr(std::string(kDeadHost) + "  " + GetParam().word + "  not read: "));
}

INSTANTIATE_TEST_SUITE_P(
    Terminals, HealthOnATerminal,
    testing::Values(ColourCase{"Colours", {"TERM=vt100"}, "\x1b[35mUNKNOWN\x1b[0m"},
                    ColourCase{"EmptyWish", {"TERM=vt100", "NO_COLOR="}, "\x1b[35mUNKNOWN\x1b[0m"},
                    ColourCase{"UnwantedColours", {"TERM=vt100", "NO_COLOR=1"}, "UNKNOWN"},
                    ColourCase{"TerminalWithoutColours", {"TERM=dumb"}, "UNKNOWN"},
                    ColourCase{"UnknownTerminal", {}, "UNKNOWN"}),
    [](const testing::TestParamInfo<ColourCase>& row) { return row.param.name; });

TEST_F(DeadHostsOnTerminal, HealthInAPipeHasNoColours) {
  Child tool(CallOf(kDeadHost, {"health"}), {"IPMI_PASSWORD=sesame", "TERM=vt100"}, {},
             terminal_.Name());
  EXPECT_THAT(tool.Wait().output,
              testing::StartsWith(std::string(kDeadHost) + "  UNKNOWN  not read: "));
}

TEST_F(DeadHostsOnTerminal, QuietRunOnOneShowsNoProgress) {
  EXPECT_THAT(SeenOf(CallOf(kDeadHost, {"--quiet", "identity"}), {"TERM=vt100"}),
              testing::StartsWith("smm-inventory: nothing read from "));
}

TEST_F(DeadHostsOnTerminal, QuietRunOnSeveralShowsNoProgress) {
  const UdpPort silent;
  const std::string hosts = std::string(kDeadHost) + ",127.0.0.1:" + silent.Text();
  const std::string seen = SeenOf(CallOf(hosts, {"--quiet", "identity"}), {"TERM=vt100"});
  EXPECT_THAT(seen, HasSubstr("failed 2 of 2: "));
  EXPECT_THAT(seen, Not(HasSubstr("of 2 done")));
  EXPECT_THAT(seen, Not(HasSubstr("\x1b")));
}

TEST_F(WaitOnTerminal, TerminalThatCannotMoveItsCursorGetsWholeLines) {
  terminal_.Resize(20);
  const Child tool = Start("dumb");
  terminal_.ReadUntil("attempt 1 of 6, 3 seconds apart ...\r\n");
  EXPECT_THAT(terminal_.Seen(), Not(HasSubstr("\x1b")));
}

TEST_F(WaitOnTerminal, StatusKeepsToOneRowOfANarrowTerminal) {
  terminal_.Resize(20);
  const Child tool = Start("vt100");
  terminal_.ReadUntil("s\r\x1b[K");
  EXPECT_THAT(terminal_.Seen(), HasSubstr("\r\x1b[Kreading the SMM's s\r\x1b[K"));
}

}  // namespace
}  // namespace Tavrin
