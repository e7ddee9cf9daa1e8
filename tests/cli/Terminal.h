#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <string>

namespace Tavrin {

/// A terminal for a program to run on, and what a person at it sees and types.
class Terminal {
 public:
  Terminal() {
    std::array<char, 128> name{};
    EXPECT_EQ(openpty(&person_, &program_, name.data(), nullptr, nullptr), 0);
    // What the test holds must not reach the program, or end of file would never come.
    fcntl(person_, F_SETFD, FD_CLOEXEC);
    fcntl(program_, F_SETFD, FD_CLOEXEC);
    name_ = name.data();
  }
  ~Terminal() {
    HangUp();
    close(program_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  const std::string& Name() const { return name_; }
  const std::string& Seen() const { return seen_; }
  /// The program's side.
  int Descriptor() const { return program_; }

  /// Reads until the text is there, behind what was waited for before.
  void ReadUntil(const std::string& text) {
    std::size_t found = 0;
    while ((found = seen_.find(text, waitedFor_)) == std::string::npos) {
      ASSERT_TRUE(Read()) << "no \"" << text << "\" in \"" << seen_.substr(waitedFor_) << '"';
    }
    waitedFor_ = found + text.size();
  }
  /// Reads until the program is gone. Its side of the terminal cannot be looked at afterwards.
  void ReadToEnd() {
    close(program_);
    program_ = -1;
    while (Read()) {
    }
  }
  void Type(const std::string& keys) const {
    EXPECT_EQ(write(person_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  /// The person is gone; nothing can be read or typed any more.
  void HangUp() {
    close(person_);
    person_ = -1;
  }
  termios Settings() const {
    termios settings{};
    EXPECT_EQ(tcgetattr(program_, &settings), 0);
    return settings;
  }
  bool Echoes() const { return (Settings().c_lflag & ECHO) != 0; }
  void SwitchEchoOn() const {
    termios settings = Settings();
    settings.c_lflag |= ECHO;
    EXPECT_EQ(tcsetattr(program_, TCSANOW, &settings), 0);
  }
  void Resize(unsigned short columns) const {
    const winsize size{24, columns, 0, 0};
    EXPECT_EQ(ioctl(program_, TIOCSWINSZ, &size), 0);
  }
  bool HasInput() const {
    fcntl(program_, F_SETFL, O_NONBLOCK);
    char byte = 0;
    return read(program_, &byte, 1) == 1;
  }

 private:
  /// Takes what comes next; false when the program is gone, or says nothing for half a minute.
  bool Read() {
    constexpr int silence = 30'000;
    pollfd source{person_, POLLIN, 0};
    if (poll(&source, 1, silence) != 1) {
      ADD_FAILURE() << "the program fell silent after \"" << seen_ << '"';
      return false;
    }
    std::array<char, 256> buffer{};
    const ssize_t count = read(person_, buffer.data(), buffer.size());
    seen_.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
  }

  std::string name_;
  std::string seen_;
  std::size_t waitedFor_ = 0;
  int person_ = -1;
  int program_ = -1;
};

}  // namespace Tavrin
