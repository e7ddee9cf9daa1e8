#include "tools/smm-inventory/Password.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "support/UsageError.h"
#include "tests/support/Refusal.h"

namespace Tavrin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::ThrowsMessage;

class PasswordFile : public testing::Test {
 protected:
  PasswordFile() {
    std::string pattern = testing::TempDir() + "smm-password-XXXXXX";
    close(mkstemp(pattern.data()));
    path_ = pattern;
  }
  ~PasswordFile() override { std::filesystem::remove(path_); }

  void Fill(const std::string& content) const { std::ofstream(path_, std::ios::binary) << content; }
  std::string Read() const {
    std::string password;
    ReadPasswordFile(path_, password);
    return password;
  }
  std::string Refusal() const {
    return RefusalOf([this] { Read(); });
  }

  std::string path_;
};

struct Content {
  std::string bytes;
  std::string result;
};

TEST_F(PasswordFile, OneLineGivesThePasswordWithoutItsEnd) {
  const std::vector<Content> table = {
      {"sesame", "sesame"},
      {"sesame\n", "sesame"},
      {"sesame\r\n", "sesame"},
      {" ses ame \n", " ses ame "},
      {"sesame\r", "sesame\r"},
      {"\xc3\xbc\xff\n", "\xc3\xbc\xff"},
      {"x", "x"},
      {"0123456789abcdefghij", "0123456789abcdefghij"},
      {"0123456789abcdefghij\n", "0123456789abcdefghij"},
      {"0123456789abcdefghij\r\n", "0123456789abcdefghij"},
  };
  for (const Content& row : table) {
    SCOPED_TRACE(row.bytes);
    Fill(row.bytes);
    EXPECT_EQ(Read(), row.result);
  }
}

TEST_F(PasswordFile, UnfitContentIsRefusedWithoutShowingIt) {
  const std::vector<Content> table = {
      {"", "is empty"},
      {"\n", "is empty"},
      {"\r\n", "is empty"},
      {"\nsesame\n", "is empty"},
      {"sesame-sesame-sesame-", "longer than 20 bytes"},
      {"sesame-sesame-sesame-\n", "longer than 20 bytes"},
      {"sesame-sesame-sesame-and more\n", "longer than 20 bytes"},
      {"sesame\nsesame", "more than one line"},
      {"sesame\n\n", "more than one line"},
      {std::string("ses\0ame\n", 8), "NUL byte"},
  };
  for (const Content& row : table) {
    SCOPED_TRACE(row.bytes);
    Fill(row.bytes);
    const std::string refusal = Refusal();
    EXPECT_THAT(refusal, HasSubstr(row.result));
    EXPECT_THAT(refusal, HasSubstr("; expected "));
    EXPECT_THAT(refusal, HasSubstr(path_));
    EXPECT_THAT(refusal, Not(HasSubstr("sesame")));
  }
}

TEST_F(PasswordFile, FileThatGroupOrOthersCanReadIsRefused) {
  Fill("sesame\n");
  for (const mode_t mode : {0640U, 0604U, 0644U, 0444U}) {
    chmod(path_.c_str(), mode);
    EXPECT_THAT(Refusal(), HasSubstr("can be read by its group or by others (mode 0"));
  }
}

TEST_F(PasswordFile, FileThatOnlyItsOwnerCanReadIsTaken) {
  Fill("sesame\n");
  for (const mode_t mode : {0600U, 0400U, 0700U}) {
    chmod(path_.c_str(), mode);
    EXPECT_EQ(Read(), "sesame");
  }
}

TEST_F(PasswordFile, MissingFileIsRefusedByName) {
  std::string password;
  EXPECT_THAT([&] { ReadPasswordFile("/nowhere/secret", password); },
              ThrowsMessage<UsageError>(
                  "password file \"/nowhere/secret\" cannot be opened (No such file or directory); "
                  "expected a file that holds the password"));
}

TEST_F(PasswordFile, FolderIsRefused) {
  std::filesystem::remove(path_);
  mkdir(path_.c_str(), 0700);
  EXPECT_THAT(Refusal(), HasSubstr("cannot be read (Is a directory)"));
}

TEST(PasswordLine, BytesAfterTheLineStayUnread) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  ASSERT_EQ(write(ends[1], "sesame\nrest", 11), 11);
  std::string password;
  ReadPasswordLine(ends[0], "standard input", password);
  EXPECT_EQ(password, "sesame");
  std::array<char, 8> rest{};
  EXPECT_EQ(read(ends[0], rest.data(), rest.size()), 4);
  EXPECT_STREQ(rest.data(), "rest");
  close(ends[0]);
  close(ends[1]);
}

TEST(EnvironmentPassword, EmptyOneIsRefused) {
  std::string password;
  EXPECT_THAT(
      [&] { TakeEnvironmentPassword("", password); },
      ThrowsMessage<UsageError>(
          "the password from the environment variable IPMI_PASSWORD is empty; expected 1 to 20 "
          "bytes"));
}

TEST(EnvironmentPassword, OverlongOneIsRefusedWithoutShowingIt) {
  std::string password;
  EXPECT_THAT([&] { TakeEnvironmentPassword("sesame-sesame-sesame-", password); },
              ThrowsMessage<UsageError>(
                  AllOf(HasSubstr("longer than 20 bytes"), Not(HasSubstr("sesame")))));
}

TEST(EnvironmentPassword, OtherOnesAreTakenAsTheyAre) {
  std::string password;
  TakeEnvironmentPassword(" 0123456789abcdefgh\n", password);
  EXPECT_EQ(password, " 0123456789abcdefgh\n");
}

}  // namespace
}  // namespace Tavrin
