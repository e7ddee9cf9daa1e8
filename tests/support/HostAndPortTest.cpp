#include "support/HostAndPort.h"

#include <gmock/gmock.h>

#include "support/UsageError.h"

namespace Tavrin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

struct GoodHost {
  std::string text;
  std::string host;
  std::optional<std::uint16_t> port;
};

TEST(Host, ValidTextGivesHostAndPort) {
  const std::vector<GoodHost> table = {
      {"smm1", "smm1", {}},
      {"smm-1.rack_2.example", "smm-1.rack_2.example", {}},
      {"smm1:6230", "smm1", 6230},
      {"192.0.2.7", "192.0.2.7", {}},
      {"192.0.2.7:1", "192.0.2.7", 1},
      {"192.0.2.7:65535", "192.0.2.7", 65535},
      {"7even.example", "7even.example", {}},
      {"::1", "::1", {}},
      {"2001:db8::623", "2001:db8::623", {}},
      {"fe80::1%eth0", "fe80::1%eth0", {}},
      {"fe80::1%br-0_a.10", "fe80::1%br-0_a.10", {}},
      {"[::1]", "::1", {}},
      {"[::1]:6230", "::1", 6230},
      {"[fe80::1%eth0]:6230", "fe80::1%eth0", 6230},
      {"::ffff:192.0.2.7", "::ffff:192.0.2.7", {}},
      {std::string(253, 'a'), std::string(253, 'a'), {}},
  };
  for (const GoodHost& row : table) {
    SCOPED_TRACE(row.text);
    const HostAndPort result = ParseHost(row.text);
    EXPECT_EQ(result.host, row.host);
    EXPECT_EQ(result.port, row.port);
  }
}

TEST(Host, InvalidTextIsRefusedByName) {
  const std::vector<std::string> table = {"",         ":623",
                                          "a b",      " a",
                                          "a ",       "-a",
                                          "a/b",      "user@a",
                                          "a:1:2",    "256.1.1.1",
                                          "10.1",     "1.2.3.4.5",
                                          "1",        "...",
                                          "[::1",     "[]",
                                          "[a]:1",    "[192.0.2.7]:1",
                                          "[::1]623", "[::1]x",
                                          "::1%",     "1::2::3",
                                          "fe80::g",  "a\nb",
                                          "a;b",      std::string(254, 'a')};
  for (const std::string& text : table) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { ParseHost(text); },
                ThrowsMessage<UsageError>(
                    AllOf(HasSubstr("host is \""), HasSubstr("expected a host name"))));
  }
}

TEST(Host, ZoneThatNamesNoInterfaceIsRefused) {
  const std::vector<std::string> table = {"fe80::1%",  "fe80::1%a b", "fe80::1%a\x1b[2J",
                                          "fe80::1%]", "fe80::1%a:1", "[fe80::1%\n]:1"};
  for (const std::string& text : table) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { ParseHost(text); }, ThrowsMessage<UsageError>(HasSubstr("host is \"")));
  }
}

TEST(Host, NulByteIsRefused) {
  EXPECT_THAT([] { ParseHost(std::string("a\0b", 3)); },
              ThrowsMessage<UsageError>(HasSubstr("host is \"a\\x00b\"")));
}

TEST(Host, ControlBytesAreEscapedInTheRefusal) {
  EXPECT_THAT([] { ParseHost("a\x1b[2J"); },
              ThrowsMessage<UsageError>(HasSubstr("host is \"a\\x1b[2J\"")));
}

TEST(Port, InvalidTextIsRefusedByName) {
  const std::vector<std::string> table = {"",   "0",    "65536", "-1",  "+1",  " 1",
                                          "1 ", "0x10", "x",     "1.0", "1e3", "99999999999999"};
  for (const std::string& text : table) {
    SCOPED_TRACE(text);
    EXPECT_THAT(
        [&] { ParsePort(text); },
        ThrowsMessage<UsageError>("port is \"" + text + "\"; expected a number from 1 to 65535"));
  }
}

TEST(Port, InvalidPortBesideHostIsRefused) {
  const std::vector<std::string> table = {"a:", "a:0", "a:x", "[::1]:", "[::1]:65536"};
  for (const std::string& text : table) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { ParseHost(text); }, ThrowsMessage<UsageError>(HasSubstr("port is \"")));
  }
}

TEST(AddressText, PutsAnIpv6AddressInBrackets) {
  EXPECT_EQ(AddressText("192.0.2.10", 623), "192.0.2.10:623");
  EXPECT_EQ(AddressText("smm.example", 6230), "smm.example:6230");
  EXPECT_EQ(AddressText("2001:db8::1", 623), "[2001:db8::1]:623");
}

}  // namespace
}  // namespace Tavrin
