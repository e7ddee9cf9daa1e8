#include <gmock/gmock.h>
#include <termios.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/cli/Terminal.h"
#include "tests/cli/Tool.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;

class TerminalTest : public testing::Test {
 protected:
  Terminal terminal_;
  std::vector<std::string> call_ = {SMM_INVENTORY, "-H", "a", "-U", "admin"};
};

TEST_F(TerminalTest, TypedPasswordIsNotShown) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password of admin at a:623: ");
  EXPECT_FALSE(terminal_.Echoes());
  terminal_.Type("sesame-sesame-sesame-\n");
  EXPECT_EQ(tool.Wait().exitCode, 2);
  terminal_.ReadUntil("the password from the terminal is longer than 20 bytes");
  EXPECT_THAT(terminal_.Seen(), Not(HasSubstr("sesame")));
  EXPECT_TRUE(terminal_.Echoes());
}

TEST_F(TerminalTest, PasswordTypedAsStandardInputIsNotShown) {
  call_.insert(call_.end(), {"--password-file", "-"});
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password of admin at a:623: ");
  EXPECT_FALSE(terminal_.Echoes());
  terminal_.Type("sesame-sesame-sesame-\n");
  EXPECT_EQ(tool.Wait().exitCode, 2);
  terminal_.ReadUntil("the password from the terminal is longer than 20 bytes");
  EXPECT_THAT(terminal_.Seen(), Not(HasSubstr("sesame")));
  EXPECT_TRUE(terminal_.Echoes());
}

TEST_F(TerminalTest, WhatIsTypedBeyondThePasswordIsDropped) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("sesame-sesame-sesame-and much more\nrm -r precious\n");
  tool.Wait();
  // Nothing is left for whoever reads the terminal next.
  EXPECT_FALSE(terminal_.HasInput());
}

TEST_F(TerminalTest, InterruptAtThePromptRestoresTheTerminal) {
  const termios before = terminal_.Settings();
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("\x03");
  EXPECT_EQ(tool.Wait().signal, SIGINT);
  EXPECT_EQ(terminal_.Settings().c_lflag, before.c_lflag);
  EXPECT_EQ(terminal_.Settings().c_cc[VSUSP], before.c_cc[VSUSP]);
}

TEST_F(TerminalTest, EndOfInputAtThePromptIsAnEmptyPassword) {
  Child tool(call_, {}, {}, terminal_.Name());
  terminal_.ReadUntil("Password");
  terminal_.Type("\x04");
  EXPECT_EQ(tool.Wait().exitCode, 2);
  terminal_.ReadUntil("the password from the terminal is empty");
  EXPECT_TRUE(terminal_.Echoes());
}

TEST_F(TerminalTest, InterruptDuringTheWaitLeavesTheTerminalAsItWas) {
  const termios before = terminal_.Settings();
  call_[2] = "127.0.0.1:9";
  Child tool(call_, {"IPMI_PASSWORD=sesame", "IPMI_SESSION_TIMEOUT_MS=200", "TERM=vt100"}, {},
             terminal_.Name());
  terminal_.ReadUntil("connecting to");
  terminal_.Type("\x03");
  EXPECT_EQ(tool.Wait().signal, SIGINT);
  EXPECT_EQ(terminal_.Settings().c_lflag, before.c_lflag);
}

TEST_F(TerminalTest, TerminalThatCannotMoveItsCursorGetsWholeLines) {
  const SimulatedSmm simulator({"--generation", "1"});
  call_[2] = simulator.Address();
  call_.insert(call_.end(), {"-W", "open-session-privilege"});
  Child tool(call_, {"IPMI_PASSWORD=sesame", "TERM=dumb"}, {}, terminal_.Name());
  terminal_.ReadUntil("attempt 1 of 6, 3 seconds apart ...\r\n");
  EXPECT_THAT(terminal_.Seen(), Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace Tavrin
