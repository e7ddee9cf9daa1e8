#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>

#include "support/FileDescriptor.h"

namespace Tavrin {

/// A terminal for a program to run on, and what a person at it sees and types. What the test holds
/// of it does not reach the program, or end of file would never come.
class Terminal {
 public:
  const std::string& Name() const { return name_; }
  const std::string& Seen() const { return seen_; }
  /// The program's side.
  int Descriptor() const { return program_.Get(); }

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
    program_.Close();
    while (Read()) {
    }
  }
  void Type(const std::string& keys) const {
    EXPECT_EQ(write(person_.Get(), keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  /// The person is gone; nothing can be read or typed any more.
  void HangUp() { person_.Close(); }

  void Resize(unsigned short columns) const {
    const winsize size{24, columns, 0, 0};
    EXPECT_EQ(ioctl(Descriptor(), TIOCSWINSZ, &size), 0);
  }

 private:
  static std::string NameBehind(const FileDescriptor& person) {
    EXPECT_EQ(grantpt(person.Get()) | unlockpt(person.Get()), 0);
    return ptsname(person.Get());
  }

  /// Takes what comes next; false when the program is gone, or says nothing for half a minute.
  bool Read() {
    constexpr int silence = 30'000;
    pollfd source{person_.Get(), POLLIN, 0};
    if (poll(&source, 1, silence) != 1) {
      ADD_FAILURE() << "the program fell silent after \"" << seen_ << '"';
      return false;
    }
    std::array<char, 256> buffer{};
    const ssize_t count = read(person_.Get(), buffer.data(), buffer.size());
    seen_.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
  }

  FileDescriptor person_{posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
  std::string name_ = NameBehind(person_);
  FileDescriptor program_{open(name_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
  std::string seen_;
  std::size_t waitedFor_ = 0;
};

}  // namespace Tavrin
