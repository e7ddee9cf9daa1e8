#include <fcntl.h>
#include <gmock/gmock.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "tests/cli/Tool.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A terminal with the tool on it, and with what a person at it would see and type.
class TerminalTest : public testing::Test {
 protected:
  TerminalTest() {
    std::array<char, 128> name{};
    EXPECT_EQ(openpty(&person_, &tool_, name.data(), nullptr, nullptr), 0);
    // What the test holds must not reach the tool, or end of file would never come.
    fcntl(person_, F_SETFD, FD_CLOEXEC);
    fcntl(tool_, F_SETFD, FD_CLOEXEC);
    name_ = name.data();
  }
  ~TerminalTest() override {
    close(person_);
    close(tool_);
  }

  void ReadUntil(const std::string& text) {
    std::array<char, 256> buffer{};
    while (seen_.find(text) == std::string::npos) {
      const ssize_t count = read(person_, buffer.data(), buffer.size());
      ASSERT_GT(count, 0);
      seen_.append(buffer.data(), static_cast<std::size_t>(count));
    }
  }
  void Type(const std::string& keys) const {
    EXPECT_EQ(write(person_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  termios Settings() const {
    termios settings{};
    EXPECT_EQ(tcgetattr(tool_, &settings), 0);
    return settings;
  }
  bool Echoes() const { return (Settings().c_lflag & ECHO) != 0; }

  std::vector<std::string> call_ = {SMM_INVENTORY, "-H", "a", "-U", "admin"};
  std::string name_;
  std::string seen_;
  int person_ = -1;
  int tool_ = -1;
};

TEST_F(TerminalTest, TypedPasswordIsNotShown) {
  Child tool(call_, {}, {}, name_);
  ReadUntil("Password of admin at a:623: ");
  EXPECT_FALSE(Echoes());
  Type("sesame-sesame-sesame-\n");
  EXPECT_EQ(tool.Wait().exitCode, 2);
  ReadUntil("the password from the terminal is longer than 20 bytes");
  EXPECT_THAT(seen_, Not(HasSubstr("sesame")));
  EXPECT_TRUE(Echoes());
}

TEST_F(TerminalTest, PasswordTypedAsStandardInputIsNotShown) {
  call_.insert(call_.end(), {"--password-file", "-"});
  Child tool(call_, {}, {}, name_);
  ReadUntil("Password of admin at a:623: ");
  EXPECT_FALSE(Echoes());
  Type("sesame-sesame-sesame-\n");
  EXPECT_EQ(tool.Wait().exitCode, 2);
  ReadUntil("the password from the terminal is longer than 20 bytes");
  EXPECT_THAT(seen_, Not(HasSubstr("sesame")));
  EXPECT_TRUE(Echoes());
}

TEST_F(TerminalTest, WhatIsTypedBeyondThePasswordIsDropped) {
  Child tool(call_, {}, {}, name_);
  ReadUntil("Password");
  Type("sesame-sesame-sesame-and much more\nrm -r precious\n");
  tool.Wait();
  // Nothing is left for whoever reads the terminal next.
  fcntl(tool_, F_SETFL, O_NONBLOCK);
  char byte = 0;
  EXPECT_EQ(read(tool_, &byte, 1), -1);
}

TEST_F(TerminalTest, InterruptAtThePromptRestoresTheTerminal) {
  const termios before = Settings();
  Child tool(call_, {}, {}, name_);
  ReadUntil("Password");
  Type("\x03");
  EXPECT_EQ(tool.Wait().signal, SIGINT);
  EXPECT_EQ(Settings().c_lflag, before.c_lflag);
  EXPECT_EQ(Settings().c_cc[VSUSP], before.c_cc[VSUSP]);
}

TEST_F(TerminalTest, EndOfInputAtThePromptIsAnEmptyPassword) {
  Child tool(call_, {}, {}, name_);
  ReadUntil("Password");
  Type("\x04");
  EXPECT_EQ(tool.Wait().exitCode, 2);
  ReadUntil("the password from the terminal is empty");
  EXPECT_TRUE(Echoes());
}

TEST_F(TerminalTest, InterruptDuringTheWaitLeavesTheTerminalAsItWas) {
  const termios before = Settings();
  call_[2] = "127.0.0.1:9";
  Child tool(call_, {"IPMI_PASSWORD=sesame", "IPMI_SESSION_TIMEOUT_MS=200", "TERM=vt100"}, {},
             name_);
  ReadUntil("attempt 1 of 6");
  Type("\x03");
  EXPECT_EQ(tool.Wait().signal, SIGINT);
  EXPECT_EQ(Settings().c_lflag, before.c_lflag);
}

TEST_F(TerminalTest, TerminalThatCannotMoveItsCursorGetsWholeLines) {
  call_[2] = "127.0.0.1:9";
  Child tool(call_, {"IPMI_PASSWORD=sesame", "IPMI_SESSION_TIMEOUT_MS=200", "TERM=dumb"}, {},
             name_);
  ReadUntil("attempt 1 of 6, 3 seconds apart ...\r\n");
  EXPECT_THAT(seen_, Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace Tavrin
