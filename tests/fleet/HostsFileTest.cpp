#include "fleet/HostsFile.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <utility>

#include "support/FileDescriptor.h"
#include "support/TemporaryFile.h"
#include "tests/support/Refusal.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

HostsFile Parse(const std::string& text) { return ParseHostsFile(text, "hosts file \"f\""); }

HostsLine OnlyLine(const std::string& text) {
  HostsFile file = Parse(text);
  EXPECT_THAT(file.lines, SizeIs(1)) << text;
  return file.lines.at(0);
}

std::vector<std::string> HostsOf(const HostsLine& line) {
  std::vector<std::string> hosts;
  for (const HostAndPort& place : line.hosts) {
    hosts.push_back(AddressText(place.host, place.port.value_or(0)));
  }
  return hosts;
}

std::string FileRefusal(const std::string& text) {
  return RefusalOf([&] { Parse(text); });
}

TEST(HostsFile, LineNamesHostsByARange) {
  EXPECT_THAT(HostsOf(OnlyLine("rack[01-02]\n")), ElementsAre("rack01:0", "rack02:0"));
  EXPECT_THAT(HostsOf(OnlyLine("n1:6230,n[3,5]")), ElementsAre("n1:6230", "n3:0", "n5:0"));
}

TEST(HostsFile, LineAloneSaysNothingElse) {
  const HostsLine line = OnlyLine("n1");
  EXPECT_EQ(line.group, "");
  EXPECT_EQ(line.settings.userName, std::nullopt);
  EXPECT_EQ(line.settings.passwordFile, std::nullopt);
  EXPECT_EQ(line.settings.cipherSuite, std::nullopt);
  EXPECT_EQ(line.settings.privilegeLevel, std::nullopt);
  EXPECT_EQ(line.settings.workaroundFlags, std::nullopt);
  EXPECT_EQ(line.settings.attempts, std::nullopt);
  EXPECT_EQ(line.settings.sessionTimeoutMs, std::nullopt);
}

TEST(HostsFile, CommentsAndEmptyLinesSayNothing) {
  EXPECT_THAT(Parse("# all racks\n\n   \n\t# n1\n#").lines, IsEmpty());
  EXPECT_THAT(Parse("").lines, IsEmpty());
  EXPECT_THAT(HostsOf(OnlyLine("\n  n1\t# the first\n")), ElementsAre("n1:0"));
}

TEST(HostsFile, NumberSignWithinAWordIsNoComment) {
  EXPECT_EQ(OnlyLine("n1 password-file=/etc/smm#1 # first").settings.passwordFile, "/etc/smm#1");
}

TEST(HostsFile, LineMayEndAsOnWindows) {
  const HostsFile file = Parse("[a]\r\nn1 user=u\r\n\r\n");
  EXPECT_THAT(file.groups, ElementsAre("a"));
  EXPECT_EQ(file.lines.at(0).settings.userName, "u");
}

TEST(HostsFile, ByteOrderMarkInFrontSaysNothing) {
  EXPECT_THAT(HostsOf(OnlyLine("\xEF\xBB\xBFn1\n")), ElementsAre("n1:0"));
}

TEST(HostsFile, SettingsAreThoseOfTheOptionsOfTheirName) {
  const HostsLine line = OnlyLine(
      "n[1-2]\tuser=admin  password-file=/etc/smm port=6230 cipher-suite=17 privilege=operator "
      "workaround=open-session-privilege,no-checksum-check session-timeout=2.5 attempts=2");
  EXPECT_THAT(HostsOf(line), ElementsAre("n1:6230", "n2:6230"));
  EXPECT_EQ(line.settings.userName, "admin");
  EXPECT_EQ(line.settings.passwordFile, "/etc/smm");
  EXPECT_EQ(line.settings.cipherSuite, 17);
  EXPECT_EQ(line.settings.privilegeLevel, 3);
  EXPECT_EQ(line.settings.workaroundFlags, 0x50);
  EXPECT_EQ(line.settings.sessionTimeoutMs, 2500);
  EXPECT_EQ(line.settings.attempts, 2);
  EXPECT_EQ(line.writtenSettings,
            "user=admin password-file=/etc/smm cipher-suite=17 privilege=operator "
            "workaround=open-session-privilege,no-checksum-check session-timeout=2.5 attempts=2");
}

TEST(HostsFile, ValueMayHoldAnEqualsSign) {
  EXPECT_EQ(OnlyLine("n1 user=a=b").settings.userName, "a=b");
}

TEST(HostsFile, LineBelongsToTheHeadingAboveIt) {
  const HostsFile file =
      Parse("n0\n[rack-A.1]\nn1\nn2\n[b]\nn3\n[rack-A.1]\nn4\n [empty] # none\n");
  EXPECT_THAT(file.groups, ElementsAre("rack-A.1", "b", "empty"));
  std::vector<std::string> groups;
  for (const HostsLine& line : file.lines) {
    groups.push_back(line.group);
  }
  EXPECT_THAT(groups, ElementsAre("", "rack-A.1", "rack-A.1", "b", "rack-A.1"));
}

TEST(HostsFile, BracketWithAColonInItIsAnAddressAndNoHeading) {
  const HostsFile file = Parse("[2001:db8::1]\n[2001:db8::2]:6230 user=u\n");
  EXPECT_THAT(file.groups, IsEmpty());
  EXPECT_THAT(HostsOf(file.lines.at(0)), ElementsAre("[2001:db8::1]:0"));
  EXPECT_THAT(HostsOf(file.lines.at(1)), ElementsAre("[2001:db8::2]:6230"));
}

TEST(HostsFile, BadLineIsRefusedWithItsNumber) {
  const std::string heading =
      "expected [NAME] alone on its line, with a name other than all, of letters, digits, -, _ and "
      ".";
  const std::vector<std::pair<std::string, std::string>> table = {
      {"n1 usr=a",
       "key is \"usr\"; expected one of user, password-file, port, cipher-suite, privilege, "
       "workaround, session-timeout, attempts, each with = and a value"},
      {"n1 user", "key is \"user\" without a value; expected user=VALUE, without blanks"},
      {"n1 user = a", "key is \"user\" without a value; expected user=VALUE, without blanks"},
      {"n1 user=a user=a", "key \"user\" stands there twice; expected it once"},
      {"n1 user=", "user name is \"\"; expected 1 to 16 bytes, none of them zero"},
      {"n1 user=0123456789abcdefg",
       "user name is \"0123456789abcdefg\", 17 bytes long; expected at most 16 bytes"},
      {"n1 password-file=", "password file is \"\"; expected the path of a file"},
      {"n1 password-file=-", "password file is \"-\"; expected the path of a file"},
      {"n1 port=0", "port is \"0\"; expected a number from 1 to 65535"},
      {"n1:1 port=2", "port is \"2\" and host is \"n1:1\"; expected the port in one place"},
      {"n1 cipher-suite=4",
       "cipher suite is \"4\"; expected one of 0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17"},
      {"n1 privilege=king",
       "privilege level is \"king\"; expected one of user, operator, administrator"},
      {"n1 workaround=no-checksum-check,",
       "workaround is \"\"; expected one of authentication-capabilities, open-session-privilege, "
       "non-empty-integrity-check-value, no-checksum-check"},
      {"n1 session-timeout=0", "session time-out is \"0\"; expected seconds from 0.1 to 600"},
      {"n1 attempts=0",
       "number of attempts is \"0\"; expected a whole number from 1 to 2147483647"},
      {"n[2-1]",
       "host range is \"n[2-1]\", wrong at character 3 (\"2-1\" is reversed); expected the lower "
       "number first"},
      {"n1, n2",
       "host list is \"n1,\", wrong at character 4 (nothing stands there); expected a host"},
      {"[rack A]", "heading is \"[rack A]\"; " + heading},
      {"[rack", "heading is \"[rack\"; " + heading},
      {"[]", "heading is \"[]\"; " + heading},
      {"[all]", "heading is \"[all]\"; " + heading},
      {"[a] n1", "heading is \"[a] n1\"; " + heading},
      {"[a]b:c", "heading is \"[a]b:c\"; " + heading},
      {"[a\x1b]", "heading is \"[a\\x1b]\"; " + heading},
  };
  for (const auto& [line, refusal] : table) {
    EXPECT_EQ(FileRefusal("# first\nn0\n" + line + "\nn9\n"),
              "hosts file \"f\", line 3: " + refusal);
  }
  EXPECT_THAT(FileRefusal("@rack"), HasSubstr("line 1: host is \"@rack\"; expected"));
  EXPECT_THAT(FileRefusal("[a:b]"), HasSubstr("line 1: host is \"[a:b]\"; expected"));
}

TEST(HostsFile, PasswordInItIsRefusedWithoutShowingIt) {
  for (const std::string line : {"n1 password=sesame", "n1 -P=sesame", "n1 password = sesame",
                                 "n1 password sesame", "n1 Password-File=sesame"}) {
    EXPECT_THAT(FileRefusal(line), StartsWith("hosts file \"f\", line 1: key is \""));
    EXPECT_THAT(FileRefusal(line), Not(HasSubstr("sesame")));
  }
}

TEST(HostsFile, ZeroByteIsRefused) {
  for (const std::string& line :
       {std::string("n1\0x", 4), std::string("n1 user=a\0b", 11),
        std::string("n1 password-file=/a\0b", 21), std::string("n1 us\0er=a", 10)}) {
    EXPECT_THAT(FileRefusal(line), HasSubstr("\\x00"));
  }
}

TEST(HostsFile, MoreHostsThanThereMayBeAreRefusedOnTheLineThatExceeds) {
  EXPECT_THAT(Parse("n[1-4000]\nm[1-96]\n").lines, SizeIs(2));
  EXPECT_EQ(
      FileRefusal("n[1-4000]\nm[1-97]\n"),
      "hosts file \"f\", line 2: the file names 4097 hosts up to here; expected at most 4096");
}

TEST(ReadHostsFile, FileIsReadAndNamedInRefusals) {
  const TemporaryFile file("n1\nn2\n");
  EXPECT_THAT(ReadHostsFile(file.Path()).lines, SizeIs(2));
  const TemporaryFile bad("n1\nn2 x=y\n");
  EXPECT_THAT([&] { ReadHostsFile(bad.Path()); },
              testing::ThrowsMessage<UsageError>(
                  StartsWith("hosts file \"" + bad.Path() + "\", line 2: key is \"x\"")));
}

TEST(ReadHostsFile, FileThatCannotBeReadIsRefused) {
  EXPECT_THAT([] { ReadHostsFile("/nowhere\n"); },
              testing::ThrowsMessage<UsageError>(
                  "hosts file \"/nowhere\\n\" cannot be read (No such file or directory); expected "
                  "a file that lists hosts"));
  EXPECT_THAT([] { ReadHostsFile("/"); },
              testing::ThrowsMessage<UsageError>(HasSubstr("(Is a directory)")));
}

TEST(ReadHostsFile, EndlessFileIsRefused) {
  EXPECT_THAT([] { ReadHostsFile("/dev/zero"); },
              testing::ThrowsMessage<UsageError>("hosts file \"/dev/zero\" is longer than 4194304 "
                                                 "bytes; expected at most that"));
}

}  // namespace
}  // namespace Tavrin
