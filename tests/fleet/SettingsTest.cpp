#include "fleet/Settings.h"

#include <gmock/gmock.h>

#include <vector>

#include "support/UsageError.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(UserName, OneToSixteenBytesAreTaken) {
  EXPECT_EQ(ParseUserName("u"), "u");
  EXPECT_EQ(ParseUserName("0123456789abcdef"), "0123456789abcdef");
}

TEST(UserName, OtherTextIsRefused) {
  EXPECT_THAT([] { ParseUserName("0123456789abcdefg"); },
              ThrowsMessage<UsageError>("user name is \"0123456789abcdefg\", 17 bytes long; "
                                        "expected at most 16 bytes"));
  EXPECT_THAT(
      [] { ParseUserName(""); },
      ThrowsMessage<UsageError>("user name is \"\"; expected 1 to 16 bytes, none of them zero"));
  EXPECT_THAT([] { ParseUserName(std::string("a\0b", 3)); },
              ThrowsMessage<UsageError>(HasSubstr("user name is \"a\\x00b\"; expected 1")));
}

TEST(Privilege, NamesGiveTheirLevels) {
  EXPECT_EQ(ParsePrivilege("user"), 2);
  EXPECT_EQ(ParsePrivilege("operator"), 3);
  EXPECT_EQ(ParsePrivilege("administrator"), 4);
}

TEST(Privilege, OtherTextIsRefusedByName) {
  for (const std::string text : {"", "admin", "User", "callback", "oem", "4", "user "}) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { ParsePrivilege(text); },
                ThrowsMessage<UsageError>("privilege level is \"" + text +
                                          "\"; expected one of user, operator, administrator"));
  }
}

TEST(CipherSuite, IdsThatTheClientSpeaksAreTaken) {
  for (const int id : {0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17}) {
    EXPECT_EQ(ParseCipherSuite(std::to_string(id)), id);
  }
}

TEST(CipherSuite, OtherTextIsRefusedByName) {
  for (const std::string text : {"", "4", "5", "9", "10", "13", "14", "18", "-1", "+3", "x", "3 ",
                                 "03", "3.0", "99999999999"}) {
    SCOPED_TRACE(text);
    EXPECT_THAT(
        [&] { ParseCipherSuite(text); },
        ThrowsMessage<UsageError>("cipher suite is \"" + text +
                                  "\"; expected one of 0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17"));
  }
}

TEST(Workarounds, NamesGiveTheirFlags) {
  EXPECT_EQ(ParseWorkarounds({"authentication-capabilities"}), 0x01);
  EXPECT_EQ(ParseWorkarounds({"open-session-privilege"}), 0x10);
  EXPECT_EQ(ParseWorkarounds({"non-empty-integrity-check-value"}), 0x20);
  EXPECT_EQ(ParseWorkarounds({"no-checksum-check"}), 0x40);
}

TEST(Workarounds, SeveralNamesAreJoined) {
  EXPECT_EQ(ParseWorkarounds({"open-session-privilege", "no-checksum-check"}), 0x50);
  EXPECT_EQ(ParseWorkarounds({"no-checksum-check", "no-checksum-check"}), 0x40);
}

TEST(Workarounds, UnknownNameIsRefusedByName) {
  const std::vector<std::string> names = {"open-session-privilege", "none\x07"};
  EXPECT_THAT([&] { ParseWorkarounds(names); },
              ThrowsMessage<UsageError>(HasSubstr("workaround is \"none\\x07\"; "
                                                  "expected one of authentication-capabilities")));
}

TEST(Attempts, WholeNumberFromOneIsTaken) {
  EXPECT_EQ(ParseAttempts("1"), 1);
  EXPECT_EQ(ParseAttempts("2147483647"), 2147483647);
}

TEST(Attempts, OtherTextIsRefused) {
  for (const std::string text : {"", "0", "-1", "+1", "1.5", "x", "1 ", "2147483648"}) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { ParseAttempts(text); },
                ThrowsMessage<UsageError>("number of attempts is \"" + text +
                                          "\"; expected a whole number from 1 to 2147483647"));
  }
}

struct TimeoutRow {
  std::string text;
  int milliseconds;
};

TEST(SessionTimeout, SecondsAreTakenWithTheirDecimalPlaces) {
  const std::vector<TimeoutRow> table = {{"0.1", 100},   {"0.25", 250},    {"1", 1000},
                                         {"4.5", 4500},  {"1.0005", 1001}, {"2.", 2000},
                                         {"600", 600000}};
  for (const TimeoutRow& row : table) {
    EXPECT_EQ(ParseSessionTimeout(row.text), row.milliseconds) << row.text;
  }
}

TEST(SessionTimeout, OtherTextIsRefused) {
  for (const std::string text : {"", "0", "0.09", "600.1", "-1", "+1", "x", "1s", "1,5", "1e1",
                                 " 1", "1 ", "nan", "inf", "0x1", "\x1b"}) {
    SCOPED_TRACE(text);
    const std::string shown = text == "\x1b" ? "\\x1b" : text;
    EXPECT_THAT([&] { ParseSessionTimeout(text); },
                ThrowsMessage<UsageError>("session time-out is \"" + shown +
                                          "\"; expected seconds from 0.1 to 600"));
  }
}

}  // namespace
}  // namespace Tavrin
